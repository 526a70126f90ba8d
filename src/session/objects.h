#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "session/handles.h"
#include "session/tensor_registry.h"
#include "session/variable.h"

namespace kiv::session {

// What is kept of the objects that clients create: enough to name them in the
// generated program. From any thread.

// An object that is nothing but a variable.
class NamedObject {
 public:
  NamedObject(std::string name, std::uint32_t programNumber)
      : variable_(std::move(name), programNumber) {}
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

class SaverContext;

// A graph. Executions are numbered from 0; the number and the text that holds
// it are made under executionMutex().
class SaverGraph : public NamedObject {
 public:
  // `outer` is the registry of the context, or of the graph above a subgraph.
  SaverGraph(std::string name, std::uint32_t programNumber,
             std::weak_ptr<SaverContext> context,
             std::shared_ptr<const TensorRegistry> outer);

  // Null once the context has been freed and no call holds it.
  std::shared_ptr<SaverContext> context() const { return context_.lock(); }
  const std::shared_ptr<TensorRegistry>& tensors() const { return tensors_; }
  std::mutex& executionMutex() { return executionMutex_; }
  std::uint32_t executionNumber() const { return executionNumber_; }
  void countExecution() { ++executionNumber_; }

 private:
  const std::weak_ptr<SaverContext> context_;
  const std::shared_ptr<TensorRegistry> tensors_;
  std::mutex executionMutex_;
  std::uint32_t executionNumber_ = 0;
};

// A context with its graphs by name, which are freed with it.
class SaverContext : public NamedObject {
 public:
  SaverContext(std::string name, std::uint32_t programNumber);

  const std::shared_ptr<TensorRegistry>& tensors() const { return tensors_; }

  // Sets a graph name aside until setGraph or dropGraphName; false when the
  // context has it, or is about to.
  bool reserveGraphName(const std::string& name);
  // False when the context has been freed meanwhile.
  bool setGraph(const std::string& name,
                std::shared_ptr<SaverGraph> graph) noexcept;
  void dropGraphName(const std::string& name) noexcept;

  // Null when there is none.
  std::shared_ptr<SaverGraph> findGraph(const std::string& name) const;

  // Takes no further graph and calls `visit` for each one that there is.
  template <typename Visit>
  void forgetGraphs(Visit&& visit) noexcept {
    const std::lock_guard lock(mutex_);
    isFreed_ = true;
    for (const auto& [name, graph] : graphs_)
      if (graph != nullptr) visit(*graph);
  }

 private:
  const std::shared_ptr<TensorRegistry> tensors_;
  mutable std::mutex mutex_;
  bool isFreed_ = false;
  // A null graph is a name set aside.
  std::map<std::string, std::shared_ptr<SaverGraph>> graphs_;
};

}  // namespace kiv::session
