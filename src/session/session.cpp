#include "session/session.h"

#include <utility>

namespace kiv::session {
namespace {

constinit std::atomic<bool> hasEnded = false;

struct Holder {
  Session session;
  ~Holder() { hasEnded = true; }
};

}  // namespace

Session* Session::current() {
  if (hasEnded) return nullptr;
  static Holder holder;
  return &holder.session;
}

template <typename Object>
Handle Session::newObject(Registry<Object>& registry, std::string_view prefix,
                          Family family) {
  return registry.add(
      std::make_shared<Object>(names_.unique(prefix, family), program()));
}

Handle Session::newContext() {
  return newObject(contexts_, "context", Family::kTensorOwner);
}

Handle Session::newDevice() {
  return newObject(devices_, "device", Family::kPlain);
}

Handle Session::newProfile() {
  return newObject(profiles_, "profile", Family::kPlain);
}

std::shared_ptr<SaverContext> Session::contextOfGraph(Handle handle) const {
  const Handle context = graphs_.contextOf(handle);
  return context == 0 ? nullptr : contexts_.find(context);
}

std::shared_ptr<SaverGraph> Session::findGraph(Handle handle) const {
  const auto context = contextOfGraph(handle);
  return context == nullptr ? nullptr : context->findGraph(handle);
}

Handle Session::registerGraph(SaverContext& context, const std::string& name,
                              std::shared_ptr<SaverGraph> graph) {
  const Handle handle = handleOf(graph.get());
  context.addGraph(name, std::move(graph));
  graphs_.add(handle, handleOf(&context));
  return handle;
}

bool Session::eraseContext(Handle handle) {
  if (!contexts_.erase(handle)) return false;
  graphs_.eraseGraphsOf(handle);
  return true;
}

}  // namespace kiv::session
