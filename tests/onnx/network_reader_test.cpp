#include "network_reader.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "run_apart.h"
#include "texts.h"

namespace onnx_client {
namespace {

TEST(NetworkReader, ReadsTensorsAndNodes) {
  const std::pair<const char*, const char*> rows[] = {
      // An input with an initializer is none; shapes are inferred.
      {R"(net (float[2] x, float[2] w) => (float[2] y) <float[2] w = {1, 2}> {
         sum = Add(x, w)  y = Relu(sum)
       })",
       "net: x -> y\n"
       "static w 232[2] 0000803f00000040\n"
       "input x 232[2]\n"
       "native sum 232[2]\n"
       "output y 232[2]\n"
       "Add_0: sum = ai.onnx.Add (x, w)\n"
       "Relu_1: y = ai.onnx.Relu (sum)\n"},
      // Open sizes are taken as 1 and marked.
      {"net (float[N, 3] x) => (float[N, 3] y) { y = Relu(x) }",
       "net: x -> y\n"
       "input x 232[1?,3]\n"
       "output y 232[1?,3]\n"
       "Relu_0: y = ai.onnx.Relu (x)\n"},
      // Places that a node leaves out. An input may be an output as well; a
      // constant one is known already.
      {R"(net (float[2] x) => (float[2] x, float[1] w, float[2] y)
          <float[1] w = {1}> { y, = Clip(x, , x) })",
       "net: x -> x, y\n"
       "static w 232[1] 0000803f\n"
       "both x 232[2]\n"
       "output y 232[2]\n"
       "Clip_0: y, - = ai.onnx.Clip (x, -, x)\n"},
      // Both branches use x and call their nodes and results alike.
      {R"(net (bool c, float[2] x) => (float[2] z) {
         z = If(c) <then_branch = one () => (float[2] r) { r = Neg(x) },
                    else_branch = two () => (float[2] r) { r = Neg(x) }>
       })",
       "net: c, x -> z\n"
       "input c 508[]\n"
       "input x* 232[2]\n"
       "output z 232[2]\n"
       "If_0_then_branch:  -> r\n"
       "output r 232[2]\n"
       "Neg_0: r = ai.onnx.Neg (x)\n"
       "If_0_else_branch:  -> r_1\n"
       "output r_1 232[2]\n"
       "Neg_0_1: r_1 = ai.onnx.Neg (x)\n"
       "If_0: z = ai.onnx.If then_branch=If_0_then_branch "
       "else_branch=If_0_else_branch (c)\n"},
      // A subgraph's outputs are tensors of their own in the order of outputs,
      // whatever the order of nodes; values that are passed on are copied.
      {R"(net (bool c, float[1] x) => (float[1] p, float[1] q, float[1] r) {
         p, q, r = If(c)
           <then_branch = one () => (float[1] a, float[1] x, float[1] b) {
              b = Abs(x)  n = Neg(x)  a = Exp(n) },
            else_branch = two () => (float[1] d, float[1] e, float[1] d) {
              e = Abs(x)  d = Neg(x) }>
       })",
       "net: c, x -> p, q, r\n"
       "input c 508[]\n"
       "input x* 232[1]\n"
       "output p 232[1]\n"
       "output q 232[1]\n"
       "output r 232[1]\n"
       "If_0_then_branch:  -> a, x_output, b\n"
       "output a 232[1]\n"
       "output x_output 232[1]\n"
       "output b 232[1]\n"
       "native n 232[1]\n"
       "Abs_0: b = ai.onnx.Abs (x)\n"
       "Neg_1: n = ai.onnx.Neg (x)\n"
       "Exp_2: a = ai.onnx.Exp (n)\n"
       "x_output: x_output = ai.onnx.Identity (x)\n"
       "If_0_else_branch:  -> d, e, d_output\n"
       "output d 232[1]\n"
       "output e 232[1]\n"
       "output d_output 232[1]\n"
       "Abs_0_1: e = ai.onnx.Abs (x)\n"
       "Neg_1_1: d = ai.onnx.Neg (x)\n"
       "d_output: d_output = ai.onnx.Identity (d)\n"
       "If_0: p, q, r = ai.onnx.If then_branch=If_0_then_branch "
       "else_branch=If_0_else_branch (c)\n"}};
  for (const auto& [graph, read] : rows) {
    onnx::ModelProto model = modelOf(graph);
    const Network network = readNetwork(model);
    EXPECT_EQ(textOf(network, network.graph), read) << graph;
  }
}

// Shapes are inferred apart, where damaged networks may do harm.
TEST(RunApart, BringsBackBytesAndSurvivesCrashes) {
  std::string large(1 << 20, 'x');
  EXPECT_EQ(runApart([&] { return large; }), large);
  EXPECT_FALSE(runApart([]() -> std::string { std::abort(); }).has_value());
  EXPECT_FALSE(runApart([]() -> std::string {
                 throw std::runtime_error("no result");
               }).has_value());
}

TEST(NetworkReader, RefusesWhatIsBrokenOrCannotBeExpressed) {
  const std::string relu = "net (float[2] x) => (float[2] y) { y = Relu(x) }";
  // What is added to the graph, and the error.
  const std::pair<const char*, const char*> rows[] = {
      {"node { op_type: 'Neg' input: 'q' output: 'r' }",
       "tensor q is used before it is defined"},
      {"initializer { name: 'y' data_type: 1 dims: 1 float_data: 1 }",
       "tensor y is defined twice"},
      {"node { input: 'x' }", "a node has no operation"},
      {"node { op_type: 'Neg' name: 'a\\000b' input: 'x' }",
       "a name in the network holds a NUL character"},
      {"input { name: 's' type { sequence_type { } } }",
       "not accepted: tensor s is a sequence"},
      {"input { name: 's' type { tensor_type { elem_type: 1 } } }",
       "not accepted: the shape of tensor s is not known"},
      {"input { name: 's' type { tensor_type { elem_type: 1 shape {"
       " dim { dim_value: 1048576 } dim { dim_value: 1048576 } } } } }",
       "not accepted: tensor s is larger than 4 GiB"},
      {"sparse_initializer { }",
       "not accepted: the network has sparse initializers"},
      {"node { op_type: 'Own' domain: 'mine' input: 'x' output: 'o' }",
       "not accepted: tensor o is of unknown type"}};
  for (const auto& [added, error] : rows) {
    onnx::ModelProto model = modelOf(relu);
    merge(added, *model.mutable_graph());
    EXPECT_EQ(errorOf([&] { readNetwork(model); }), error) << added;
  }
  onnx::ModelProto functions = modelOf(relu);
  functions.add_functions();
  EXPECT_EQ(errorOf([&] { readNetwork(functions); }),
            "not accepted: the network defines functions of its own");
}

TEST(NetworkReader, GivesOpenSizesToAllThatNameThem) {
  const char* const graph =
      "net (float[N, 3] x, float[N] y, float[M] z) => (float[N, 3] o) "
      "{ o = Relu(x) }";
  GivenShapes shapes;
  parseShape("x=2x3", shapes);
  onnx::ModelProto model = modelOf(graph);
  Network network = readNetwork(model, shapes);
  const auto line = [&](TensorIndex index) {
    return textOf(network.tensors[index]);
  };
  EXPECT_EQ(line(0), "x 232[2,3]");
  EXPECT_EQ(line(1), "y 232[2]");
  EXPECT_EQ(line(2), "z 232[1?]");
  ASSERT_EQ(network.notes.size(), 1U);
  EXPECT_NE(network.notes[0].find("input z"), std::string::npos);
  // Nothing is open where all sizes are given.
  parseShape("z=4", shapes);
  model = modelOf(graph);
  network = readNetwork(model, shapes);
  EXPECT_EQ(line(3), "o 232[2,3]");
  EXPECT_TRUE(network.notes.empty());

  for (const char* shape : {"x=2x4", "x=2", "n=1"}) {
    GivenShapes wrong;
    parseShape(shape, wrong);
    model = modelOf(graph);
    EXPECT_NE(errorOf([&] { readNetwork(model, wrong); }), "") << shape;
  }
  for (const char* shape : {"x", "=1", "x=", "x=1x", "x=a", "x=-1"})
    EXPECT_NE(errorOf([&] { parseShape(shape, shapes); }), "") << shape;
}

}  // namespace
}  // namespace onnx_client
