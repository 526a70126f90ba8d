#pragma once

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "KivInterface.h"
#include "line_writer.h"

// The records of the interface, printed to their leaves as {name=value, ...}.
// A record whose version, option or encoding is unknown shows that number and
// nothing below it.
namespace kiv::tracer {

void print(LineWriter& line, const Kiv_QuantizeParams_t& quantize);
void print(LineWriter& line, const Kiv_ScaleOffset_t& pair);
void print(LineWriter& line, const Kiv_Tensor_t& tensor);
void print(LineWriter& line, const Kiv_SparseParams_t& sparse);
void print(LineWriter& line, const Kiv_Scalar_t& scalar);
void print(LineWriter& line, const Kiv_Param_t& param);
void print(LineWriter& line, const Kiv_OpConfig_t& config);

void print(LineWriter& line, const Kiv_ErrorConfig_t& config);
void print(LineWriter& line,
           const KivContext_AsyncExecutionQueueDepth_t& depth);
void print(LineWriter& line, const KivBackend_Config_t& config);
void print(LineWriter& line, const KivContext_Config_t& config);
void print(LineWriter& line, const KivDevice_Config_t& config);
void print(LineWriter& line, const KivGraph_Config_t& config);
void print(LineWriter& line, const KivProfile_Config_t& config);
void print(LineWriter& line, const KivGpuContext_CustomConfig_t& config);
void print(LineWriter& line, const KivGpuGraph_CustomConfig_t& config);

void print(LineWriter& line, const KivDevice_CoreInfo_t& core);
void print(LineWriter& line, const KivDevice_HardwareDeviceInfo_t& device);
void print(LineWriter& line, const KivDevice_PlatformInfo_t& platform);

void print(LineWriter& line, const KivGraph_EnvironmentDescriptor_t& part);
void print(LineWriter& line, const KivGraph_Property_t& property);
void print(LineWriter& line, const KivMem_Descriptor_t& descriptor);
void print(LineWriter& line, const KivSignal_Config_t& config);

}  // namespace kiv::tracer
