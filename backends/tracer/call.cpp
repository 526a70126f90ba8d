#include "call.h"

namespace kiv::tracer {

Call::Call(Tracer& tracer, std::string_view function)
    : tracer_(tracer),
      line_(tracer.handles, tracer.settings.showsGpuRecords),
      result_(tracer.handles, tracer.settings.showsGpuRecords) {
  line_.word(std::string(function) + "(");
}

Call& Call::handle(Kind kind, const void* handle) {
  line_.handle(kind, handle);
  return *this;
}

Call& Call::log() {
  line_.word("log");
  return *this;
}

Call& Call::out(const void* target) {
  line_.word(target == nullptr ? "null" : "out");
  return *this;
}

Call& Call::create(Kind kind, void** target) {
  void* handle = target == nullptr ? nullptr : tracer_.handles.create(kind);
  return giveHandle(kind, target, handle);
}

Call& Call::giveHandle(Kind kind, void** target, void* handle) {
  if (target != nullptr) result_.handle(kind, handle);
  return store(target, handle);
}

void Call::finish() {
  if (!isShown_) return;
  line_.end(')');
  const std::string& result = result_.text();
  tracer_.output.write(line_.text() + (result.empty() ? "" : " -> " + result));
}

}  // namespace kiv::tracer
