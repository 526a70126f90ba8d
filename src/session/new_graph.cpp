#include "session/new_graph.h"

#include <utility>

#include "format/identifiers.h"

namespace kiv::session {

GraphVariable::GraphVariable(Names& names, std::string_view graphName)
    : names_(names) {
  const std::string base = format::sanitizeIdentifier(graphName);
  name_ = names.claim(base.empty() ? "graph" : base, Family::kGraph);
}

GraphVariable::~GraphVariable() {
  if (!kept_) names_.release(name_);
}

NewGraph::ReservedName::ReservedName(SaverContext& context, std::string name)
    : context_(context),
      text_(std::move(name)),
      isReserved_(context.reserveGraphName(text_)) {}

NewGraph::ReservedName::~ReservedName() {
  if (isReserved_) context_.dropGraphName(text_);
}

bool NewGraph::ReservedName::keep(std::shared_ptr<SaverGraph> graph) noexcept {
  if (!context_.setGraph(text_, std::move(graph))) return false;
  isReserved_ = false;
  return true;
}

NewGraph::NewGraph(Session& session, std::shared_ptr<SaverContext> context,
                   const char* name,
                   std::shared_ptr<const TensorRegistry> outer)
    : session_(session), context_(std::move(context)), name_(*context_, name) {
  if (!name_.isReserved()) return;
  variable_.emplace(session.names(), name_.text());
  entry_.emplace(session.graphs().prepare(std::make_shared<SaverGraph>(
      variable_->name(), session.programNumber(), context_, std::move(outer))));
}

Handle NewGraph::keep() noexcept {
  variable_->keep();
  const Handle handle = handleOf(entry_->object().get());
  if (name_.keep(entry_->object())) session_.graphs().add(*std::move(entry_));
  return handle;
}

}  // namespace kiv::session
