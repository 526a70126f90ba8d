#ifndef KIV_GRAPH_H
#define KIV_GRAPH_H

/**
 * Graphs: nodes are added in the order in which they depend on one another,
 * then the graph is finalized once and executed as often as wanted. A graph
 * belongs to its context and is freed with it.
 */

#include "KivTypes.h"

KIV_EXTERN_C_BEGIN

typedef enum {
  KIV_GRAPH_CONFIG_OPTION_CUSTOM = 0,
  KIV_GRAPH_CONFIG_OPTION_PRIORITY = 3,
  KIV_GRAPH_CONFIG_OPTION_UNDEFINED = 0x7FFFFFFF
} KivGraph_ConfigOption_t;

/** A record of the backend's own making. */
typedef void* KivGraph_CustomConfig_t;

typedef struct {
  KivGraph_ConfigOption_t option;
  union {
    KivGraph_CustomConfig_t customConfig;
    Kiv_Priority_t priority;
  };
} KivGraph_Config_t;

/** One part of a graph's execution environment; starts with its version. */
typedef struct {
  uint32_t version;
} KivGraph_EnvironmentDescriptor_t;

/** A property of a graph to be filled in; starts with its key. */
typedef struct {
  uint32_t key;
} KivGraph_Property_t;

/** Called when an asynchronous execution ends. */
typedef void (*KivGraph_NotifyFn_t)(void* argument, Kiv_ErrorHandle_t status);

/**
 * Creates a graph.
 *
 * @param name unique within the context; copied.
 * @param config config list, or null.
 * @param graph receives the handle.
 * @return 0; KIV_CONTEXT_ERROR_INVALID_HANDLE for a null context handle,
 *         KIV_GRAPH_ERROR_INVALID_HANDLE for an unknown one;
 *         KIV_GRAPH_ERROR_INVALID_ARGUMENT for a null name or out-pointer or an
 *         unknown option; KIV_GRAPH_ERROR_NAME_TAKEN for a name that the
 *         context has already; KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_CreateFn_t)(
    Kiv_ContextHandle_t context, const char* name,
    const KivGraph_Config_t** config, Kiv_GraphHandle_t* graph);

/**
 * Creates a graph below another one, for an operation that runs graphs.
 *
 * @return 0; KIV_GRAPH_ERROR_INVALID_HANDLE for a null or unknown graph, else
 *         as graphCreate.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_CreateSubgraphFn_t)(
    Kiv_GraphHandle_t graph, const char* name, Kiv_GraphHandle_t* subgraph);

/**
 * Sets options of a graph.
 *
 * @return 0; KIV_GRAPH_ERROR_INVALID_HANDLE for a null or unknown graph;
 *         KIV_GRAPH_ERROR_INVALID_ARGUMENT for an unknown option;
 *         KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_SetConfigFn_t)(
    Kiv_GraphHandle_t graph, const KivGraph_Config_t** config);

/**
 * Adds an operation.
 *
 * @param opConfig the operation; its tensors are ones that were created in the
 *        graph or in its context, told by their ids.
 * @return 0; KIV_GRAPH_ERROR_INVALID_HANDLE for a null or unknown graph;
 *         KIV_BACKEND_ERROR_INVALID_ARGUMENT for a parameter that is not valid
 *         or a null array with a count; KIV_COMMON_ERROR_NOT_SUPPORTED for a
 *         record of an unknown version or encoding;
 *         KIV_GRAPH_ERROR_INVALID_TENSOR for a tensor in a memory handle;
 *         KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE for data of an unknown type;
 *         KIV_BACKEND_ERROR_GENERAL or KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_AddNodeFn_t)(Kiv_GraphHandle_t graph,
                                                  Kiv_OpConfig_t opConfig);

/**
 * Ends the building of a graph.
 *
 * @param profile a profile that gathers figures of the call, or null.
 * @param signal a signal that may end or time the call, or null.
 * @return 0; KIV_GRAPH_ERROR_INVALID_HANDLE for a null or unknown graph;
 *         KIV_PROFILE_ERROR_INVALID_HANDLE for an unknown profile;
 *         KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_FinalizeFn_t)(Kiv_GraphHandle_t graph,
                                                   Kiv_ProfileHandle_t profile,
                                                   Kiv_SignalHandle_t signal);

/**
 * Finds a graph by its name, for example in a context made from a binary.
 *
 * @param graph receives the handle.
 * @return as graphCreate.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_RetrieveFn_t)(Kiv_ContextHandle_t context,
                                                   const char* name,
                                                   Kiv_GraphHandle_t* graph);

/**
 * Executes a finalized graph and waits for its end.
 *
 * @param inputs numInputs tensors with their data; read only.
 * @param outputs numOutputs tensors whose buffers receive the results.
 * @param profile a profile that gathers figures of the call, or null.
 * @param signal a signal that may end or time the call, or null.
 * @return as graphAddNode; KIV_PROFILE_ERROR_INVALID_HANDLE for an unknown
 *         profile; KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_ExecuteFn_t)(
    Kiv_GraphHandle_t graph, const Kiv_Tensor_t* inputs, uint32_t numInputs,
    Kiv_Tensor_t* outputs, uint32_t numOutputs, Kiv_ProfileHandle_t profile,
    Kiv_SignalHandle_t signal);

/** As graphExecute, but returns at once; notify is called at the end. */
typedef Kiv_ErrorHandle_t (*KivGraph_ExecuteAsyncFn_t)(
    Kiv_GraphHandle_t graph, const Kiv_Tensor_t* inputs, uint32_t numInputs,
    Kiv_Tensor_t* outputs, uint32_t numOutputs, Kiv_ProfileHandle_t profile,
    Kiv_SignalHandle_t signal, KivGraph_NotifyFn_t notify,
    void* notifyArgument);

/**
 * Prepares what executions of a graph need, or gives it back.
 *
 * @param descriptors numDescriptors pointers to records.
 * @return KIV_GRAPH_ERROR_INVALID_HANDLE for a null graph;
 *         KIV_GRAPH_ERROR_INVALID_ARGUMENT for a null or empty list or a
 *         version of 2 or more; else KIV_COMMON_ERROR_NOT_SUPPORTED where the
 *         library does not offer it.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_ExecutionEnvironmentFn_t)(
    Kiv_GraphHandle_t graph,
    const KivGraph_EnvironmentDescriptor_t** descriptors,
    uint32_t numDescriptors);

/**
 * Reads a property of a graph.
 *
 * @param property the address of a pointer to a record, or of null for none.
 * @return 0 for none; KIV_GRAPH_ERROR_INVALID_HANDLE for a null graph;
 *         KIV_GRAPH_ERROR_INVALID_ARGUMENT for a null argument or an unknown
 *         key; else KIV_COMMON_ERROR_NOT_SUPPORTED where the library does not
 *         offer it.
 */
typedef Kiv_ErrorHandle_t (*KivGraph_GetPropertyFn_t)(
    Kiv_GraphHandle_t graph, KivGraph_Property_t** property);

static_assert(sizeof(KivGraph_Config_t) == 16, "layout");
static_assert(offsetof(KivGraph_Config_t, customConfig) == 8, "layout");

KIV_EXTERN_C_END

#endif
