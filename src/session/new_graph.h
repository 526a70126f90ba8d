#pragma once

#include <memory>
#include <string>

#include "session/session.h"

namespace kiv::session {

// A variable for a graph: its name as an identifier, "graph" for a name without
// any. Given back unless kept. One thread at a time.
class GraphVariable {
 public:
  GraphVariable(Names& names, std::string_view graphName);
  ~GraphVariable();
  GraphVariable(const GraphVariable&) = delete;
  GraphVariable& operator=(const GraphVariable&) = delete;

  const std::string& name() const { return name_; }
  void keep() { kept_ = true; }

 private:
  Names& names_;
  std::string name_;
  bool kept_ = false;
};

// A graph whose creation is being recorded: its name is set aside in its
// context, its variable in the program, its place in the registry. All of it is
// given back unless keep() is called, which cannot fail.
//
//   NewGraph graph(session, context, name, context->tensors());
//   if (graph.isNameTaken()) return fail(kGraphNameTaken, name);
//   ...record graph.object()...
//   *out = toApi(graph.keep());
//
// One thread at a time.
class NewGraph {
 public:
  // `outer` as in SaverGraph.
  NewGraph(Session& session, std::shared_ptr<SaverContext> context,
           const char* name, std::shared_ptr<const TensorRegistry> outer);

  // Whether the context has a graph of that name, or is about to; then there is
  // no object.
  bool isNameTaken() const { return !entry_; }
  const SaverGraph& object() const { return **entry_; }

  // The handle. A context that was freed meanwhile knows none of its graphs.
  Handle keep() noexcept;

 private:
  // A graph's name, set aside in its context.
  class ReservedName {
   public:
    ReservedName(SaverContext& context, std::string name);
    ~ReservedName();
    ReservedName(const ReservedName&) = delete;
    ReservedName& operator=(const ReservedName&) = delete;

    const std::string& text() const { return text_; }
    bool isReserved() const { return isReserved_; }
    bool keep(std::shared_ptr<SaverGraph> graph) noexcept;

   private:
    SaverContext& context_;
    const std::string text_;
    bool isReserved_;
  };

  Session& session_;
  const std::shared_ptr<SaverContext> context_;
  ReservedName name_;
  std::optional<GraphVariable> variable_;
  std::optional<Registry<SaverGraph>::Entry> entry_;
};

}  // namespace kiv::session
