#include "session.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
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

// A file for a model, removed with the object.
class ModelFile {
 public:
  ModelFile(const std::string& directory, const std::string& bytes)
      : path_(directory + "/model-XXXXXX") {
    const int file = mkstemp(path_.data());
    if (file >= 0) close(file);
    std::ofstream stream(path_, std::ios::binary);
    stream << bytes << std::flush;
    if (file < 0 || !stream) {
      throw Failure(KIV_CONTEXT_ERROR_GENERAL,
                    "cannot write the model to " + path_);
    }
  }
  ~ModelFile() { std::remove(path_.c_str()); }
  ModelFile(const ModelFile&) = delete;
  ModelFile& operator=(const ModelFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

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

// ONNX Runtime looks for the data file beside the model's file.
void Session::open(const OrtSessionOptions* options) {
  const std::string bytes = serialised(model_.proto);
  const OrtFunctions& functions = library_->functions();
  if (model_.dataFile == nullptr) {
    library_->check("CreateSession", functions.createSessionFromArray(
                                         library_->env(), bytes.data(),
                                         bytes.size(), options, &session_));
    return;
  }
  const ModelFile file(model_.dataFile->directory(), bytes);
  library_->check("CreateSession",
                  functions.createSession(library_->env(), file.path().c_str(),
                                          options, &session_));
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
