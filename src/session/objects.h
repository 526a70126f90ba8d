#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "session/handles.h"
#include "session/tensor_registry.h"
#include "session/variable.h"

namespace kiv::session {

// What is kept of the objects that clients create: enough to name them in the
// generated program. All may be used from any thread.

// An object that is nothing but a variable.
class NamedObject {
 public:
  NamedObject(std::string name, std::uint32_t program)
      : variable_(std::move(name), program) {}
  const Variable& variable() const { return variable_; }

 private:
  const Variable variable_;
};

class SaverBackend : public NamedObject {
 public:
  using NamedObject::NamedObject;
};

class SaverDevice : public NamedObject {
 public:
  using NamedObject::NamedObject;
};

class SaverProfile : public NamedObject {
 public:
  using NamedObject::NamedObject;
};

// A graph. Executions are numbered from 0; the number and the text that holds
// it are made under executionMutex().
class SaverGraph : public NamedObject {
 public:
  // `outer` is the registry of the context, or of the graph above a subgraph.
  SaverGraph(std::string name, std::uint32_t program,
             std::shared_ptr<const TensorRegistry> outer);

  const std::shared_ptr<TensorRegistry>& tensors() const { return tensors_; }
  std::mutex& executionMutex() { return executionMutex_; }
  std::uint32_t executionNumber() const { return executionNumber_; }
  void countExecution() { ++executionNumber_; }

 private:
  const std::shared_ptr<TensorRegistry> tensors_;
  std::mutex executionMutex_;
  std::uint32_t executionNumber_ = 0;
};

// A context with its graphs, which are freed with it.
class SaverContext : public NamedObject {
 public:
  SaverContext(std::string name, std::uint32_t program);

  const std::shared_ptr<TensorRegistry>& tensors() const { return tensors_; }

  // Sets a graph name aside until addGraph or dropGraphName; false when the
  // context has it, or is about to.
  bool reserveGraphName(const std::string& name);
  void addGraph(const std::string& name, std::shared_ptr<SaverGraph> graph);
  void dropGraphName(const std::string& name);

  // Null when there is none.
  std::shared_ptr<SaverGraph> findGraph(Handle handle) const;
  std::shared_ptr<SaverGraph> findGraph(const std::string& name) const;
  std::vector<Handle> graphHandles() const;

 private:
  const std::shared_ptr<TensorRegistry> tensors_;
  mutable std::mutex mutex_;
  // A null graph is a name set aside.
  std::map<std::string, std::shared_ptr<SaverGraph>> graphsByName_;
  std::unordered_map<Handle, std::shared_ptr<SaverGraph>> graphsByHandle_;
};

}  // namespace kiv::session
