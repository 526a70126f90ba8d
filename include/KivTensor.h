#ifndef KIV_TENSOR_H
#define KIV_TENSOR_H

/**
 * Creation of tensors. A context's tensors may be used by all of its graphs, a
 * graph's by the graph alone. A tensor is freed with its owner.
 */

#include "KivTypes.h"

KIV_EXTERN_C_BEGIN

/**
 * Creates a tensor in a context.
 *
 * @param tensor describes the tensor; receives its id. A static tensor's data
 *        is read during the call only.
 * @return 0; KIV_TENSOR_ERROR_INVALID_ARGUMENT for a null tensor;
 *         KIV_GRAPH_ERROR_INVALID_HANDLE for a null context handle,
 *         KIV_CONTEXT_ERROR_INVALID_HANDLE for an unknown one;
 *         KIV_TENSOR_ERROR_ALREADY_EXISTS or KIV_TENSOR_ERROR_NAME_COLLISION
 *         for an id that the context has already.
 */
typedef Kiv_ErrorHandle_t (*KivTensor_CreateContextTensorFn_t)(
    Kiv_ContextHandle_t context, Kiv_Tensor_t* tensor);

/**
 * Creates a tensor in a graph.
 *
 * @param tensor as in tensorCreateContextTensor.
 * @return 0; KIV_TENSOR_ERROR_INVALID_ARGUMENT for a null tensor;
 *         KIV_GRAPH_ERROR_INVALID_HANDLE for a null or unknown graph;
 *         KIV_COMMON_ERROR_NOT_SUPPORTED for a record of an unknown version or
 *         encoding; KIV_GRAPH_ERROR_INVALID_TENSOR for a memory handle;
 *         KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE for data of an unknown type;
 *         KIV_CONTEXT_ERROR_GENERAL if the data cannot be taken.
 */
typedef Kiv_ErrorHandle_t (*KivTensor_CreateGraphTensorFn_t)(
    Kiv_GraphHandle_t graph, Kiv_Tensor_t* tensor);

KIV_EXTERN_C_END

#endif
