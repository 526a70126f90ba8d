#include "session.h"

#include <fstream>
#include <limits>
#include <utility>

#include "failure.h"
#include "owned.h"

namespace kiv::ort {
namespace {

std::string serialised(const onnx::ModelProto& model) {
  if (model.ByteSizeLong() >
      static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw Failure(KIV_CONTEXT_ERROR_GENERAL,
                  "the graph's model is larger than 2 GiB, which ONNX Runtime "
                  "cannot take");
  }
  return model.SerializeAsString();
}

void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream stream(path, std::ios::binary);
  if (!(stream << bytes << std::flush))
    throw Failure(KIV_CONTEXT_ERROR_GENERAL, "cannot write " + path);
}

}  // namespace

Session::Session(std::shared_ptr<const OrtLibrary> library, Model model,
                 bool timesNodes)
    : library_(std::move(library)), model_(std::move(model)) {
  inputs_ = readPorts(model_.proto.graph().input());
  outputs_ = readPorts(model_.proto.graph().output());
  const OrtFunctions& functions = library_->functions();
  Owned<OrtSessionOptions> options(functions.releaseSessionOptions);
  library_->check("CreateSessionOptions",
                  functions.createSessionOptions(options.receive()));
  if (timesNodes) {
    scratch_ =
        std::make_unique<ScratchDirectory>(ScratchDirectory::Place::kTemporary);
    const std::string prefix = scratch_->path() + "/profile";
    library_->check("EnableProfiling",
                    functions.enableProfiling(options.get(), prefix.c_str()));
  }
  open(options.get());
}

Session::~Session() {
  if (session_ != nullptr) library_->functions().releaseSession(session_);
}

// ONNX Runtime looks for the data file beside the model's file, and maps it. A
// version that does not follow links gets a copy.
void Session::open(const OrtSessionOptions* options) {
  const std::string bytes = serialised(model_.proto);
  const OrtFunctions& functions = library_->functions();
  if (model_.dataFile == nullptr) {
    library_->check("CreateSession", functions.createSessionFromArray(
                                         library_->env(), bytes.data(),
                                         bytes.size(), options, &session_));
    return;
  }
  const ScratchDirectory directory(ScratchDirectory::Place::kMemory);
  const std::string path = directory.path() + "/model.onnx";
  writeFile(path, bytes);
  const auto create = [&] {
    library_->check("CreateSession",
                    functions.createSession(library_->env(), path.c_str(),
                                            options, &session_));
  };
  model_.dataFile->linkInto(directory.path());
  try {
    create();
  } catch (const Failure&) {
    model_.dataFile->copyInto(directory.path());
    create();
  }
}

std::vector<NodeTime> Session::takeNodeTimes() const {
  if (scratch_ == nullptr || hasEndedProfiling_.test_and_set()) return {};
  return readNodeTimes(endProfiling());
}

std::string Session::endProfiling() const {
  const OrtFunctions& functions = library_->functions();
  OrtAllocator* allocator = nullptr;
  library_->check("GetAllocator", functions.getDefaultAllocator(&allocator));
  char* name = nullptr;
  library_->check("EndProfiling",
                  functions.endProfiling(session_, allocator, &name));
  std::string text = name;
  library_->check("AllocatorFree", functions.allocatorFree(allocator, name));
  return text;
}

std::vector<Port> Session::readPorts(
    const google::protobuf::RepeatedPtrField<onnx::ValueInfoProto>& values)
    const {
  std::vector<Port> ports;
  for (const onnx::ValueInfoProto& value : values) {
    const auto id = model_.ids.find(value.name());
    ports.push_back({id == model_.ids.end() ? 0 : id->second,
                     value.doc_string(), value.name()});
  }
  return ports;
}

const Port* findPort(std::span<const Port> ports, const TensorFields& fields) {
  for (const Port& port : ports)
    if (port.id != 0 && port.id == fields.id) return &port;
  for (const Port& port : ports)
    if (!port.name.empty() && port.name == fields.name) return &port;
  return nullptr;
}

}  // namespace kiv::ort
