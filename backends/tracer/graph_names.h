#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "KivCommon.h"
#include "handle_table.h"

namespace kiv::tracer {

// The graphs of each context by name. A graph below another one is known in the
// same context. May be used from any thread.
class GraphNames {
 public:
  // A graph whose name is in use takes the name over.
  void add(Kiv_ContextHandle_t context, const char* name,
           Kiv_GraphHandle_t graph);
  // The graph of that name, made if there is none.
  Kiv_GraphHandle_t findOrCreate(Kiv_ContextHandle_t context, const char* name,
                                 HandleTable& handles);
  // Null for a graph that was not added.
  Kiv_ContextHandle_t contextOf(Kiv_GraphHandle_t graph) const;

 private:
  mutable std::mutex mutex_;
  std::map<std::pair<Kiv_ContextHandle_t, std::string>, Kiv_GraphHandle_t>
      graphs_;
  std::map<Kiv_GraphHandle_t, Kiv_ContextHandle_t> contexts_;
};

}  // namespace kiv::tracer
