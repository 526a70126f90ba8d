#include "records.h"

// The interface declares only the first field of these records. More fields may
// follow in memory; they are not read.
namespace kiv::tracer {

void print(LineWriter& line, const KivGraph_EnvironmentDescriptor_t& part) {
  line.begin('{').field("version", part.version).end('}');
}

void print(LineWriter& line, const KivGraph_Property_t& property) {
  line.begin('{').field("key", property.key).end('}');
}

void print(LineWriter& line, const KivMem_Descriptor_t& descriptor) {
  line.begin('{').field("kind", descriptor.kind).end('}');
}

void print(LineWriter& line, const KivSignal_Config_t& config) {
  line.begin('{').field("option", config.option).end('}');
}

}  // namespace kiv::tracer
