#pragma once

// Turns the parameters of an operation into the attributes of an ONNX node:
//
//   AttributeReader reader(schema, hasSubgraph);
//   for (const Kiv_Param_t& param : params) reader.read(param, node);
//
// Calls do not tell all kinds of attributes apart; the operator's schema does:
//
//   scalar, floating point   float
//   scalar, integer          int
//   scalar, text             string; the name of a subgraph: graph
//   tensor of int64          ints, int or tensor, as the schema says
//   tensor of float32        floats or tensor, as the schema says
//   tensor of uint8          string (one that holds NUL) or tensor, likewise
//   other tensor             tensor
//   NAME_0, NAME_1, ...      strings, tensors or graphs called NAME, where the
//                            schema has such a list
//
// Without a schema a one-dimensional tensor of int64 or float32 is a list, and
// a text is a graph if the graph has a subgraph of that name.

#include <onnx/defs/schema.h>
#include <onnx/onnx_pb.h>

#include <functional>
#include <string>

#include "KivTypes.h"

namespace kiv::ort {

class AttributeReader {
 public:
  using HasSubgraph = std::function<bool(const std::string& name)>;

  // The schema may be null.
  AttributeReader(const onnx::OpSchema* schema, HasSubgraph hasSubgraph)
      : schema_(schema), hasSubgraph_(std::move(hasSubgraph)) {}

  // A graph's attribute gets an empty graph that has the subgraph's name. A
  // Failure for a parameter that is no attribute.
  void read(const Kiv_Param_t& param, onnx::NodeProto& node) const;

 private:
  using Kind = onnx::AttributeProto::AttributeType;

  Kind kindOf(const std::string& name) const;
  bool readElement(const Kiv_Param_t& param, const std::string& name,
                   onnx::NodeProto& node) const;
  void readScalar(const Kiv_Scalar_t& scalar,
                  onnx::AttributeProto& attribute) const;
  void readText(const char* text, onnx::AttributeProto& attribute) const;
  void readTensor(const Kiv_Tensor_t& record,
                  onnx::AttributeProto& attribute) const;

  const onnx::OpSchema* schema_;
  HasSubgraph hasSubgraph_;
};

}  // namespace kiv::ort
