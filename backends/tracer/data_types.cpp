#include "data_types.h"

#include "KivTypes.h"

namespace kiv::tracer {

std::uint32_t elementSize(std::uint32_t dataType) {
  switch (dataType) {
    case KIV_DATA_TYPE_INT_16:
    case KIV_DATA_TYPE_UINT_16:
    case KIV_DATA_TYPE_SFIXED_POINT_16:
    case KIV_DATA_TYPE_UFIXED_POINT_16:
      return 2;
    case KIV_DATA_TYPE_INT_32:
    case KIV_DATA_TYPE_UINT_32:
    case KIV_DATA_TYPE_FLOAT_16:
    case KIV_DATA_TYPE_FLOAT_32:
    case KIV_DATA_TYPE_SFIXED_POINT_32:
    case KIV_DATA_TYPE_UFIXED_POINT_32:
      return 4;
    case KIV_DATA_TYPE_INT_64:
    case KIV_DATA_TYPE_UINT_64:
    case KIV_DATA_TYPE_FLOAT_64:
      return 8;
    default:
      return 1;
  }
}

}  // namespace kiv::tracer
