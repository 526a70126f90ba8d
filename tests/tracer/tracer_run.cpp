#include "tracer_run.h"

#include "support/environment.h"
#include "support/provider.h"

namespace kiv::test {

TracerRun::TracerRun(const std::string& variable, const std::string& value)
    : output_(temp_.path() / "trace"),
      variable_(variable),
      library_(KIV_TRACER_LIBRARY) {
  setEnvironment("KIV_TRACER_OUTPUT", output_.string());
  if (!variable.empty()) setEnvironment(variable, value);
  // Reads the variables.
  api_ = &interfaceOf(library_);
}

TracerRun::~TracerRun() {
  unload();
  if (!variable_.empty()) setEnvironment(variable_, "");
}

std::string TracerRun::lastLine() const {
  std::string all = text();
  if (!all.empty()) all.pop_back();
  return all.substr(all.rfind('\n') + 1);
}

bool TracerRun::unload() {
  library_.unload();
  return !DynamicLibrary::isLoaded(KIV_TRACER_LIBRARY);
}

}  // namespace kiv::test
