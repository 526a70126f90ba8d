#include "api/entries.h"
#include "api/entry.h"
#include "recorders/property_recorders.h"

namespace kiv::api {

Code propertyHasCapability(KivProperty_Key_t key) {
  return enter([&](session::Session& session) {
    return recorders::recordPropertyHasCapability(session, key);
  });
}

}  // namespace kiv::api
