#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "diagnostics/spin_lock.h"
#include "output/code_stream.h"

namespace kiv::session {

// The streams that calls write their statements to, lent for a call each, so
// that their memory serves again. There are as many as calls were under way at
// once. From any thread.
//
//   const CodeStreams::Lease code = streams.lend();
//   code->emitDeclaration("Kiv_BackendHandle_t", name);
class CodeStreams {
 public:
  class Lease {
   public:
    Lease(CodeStreams& streams, std::unique_ptr<output::CodeStream> stream)
        : streams_(streams), stream_(std::move(stream)) {}
    ~Lease() { streams_.takeBack(std::move(stream_)); }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    output::CodeStream& operator*() const { return *stream_; }
    output::CodeStream* operator->() const { return stream_.get(); }

   private:
    CodeStreams& streams_;
    std::unique_ptr<output::CodeStream> stream_;
  };

  Lease lend() {
    {
      const std::lock_guard lock(lock_);
      if (!free_.empty()) {
        auto stream = std::move(free_.back());
        free_.pop_back();
        return {*this, std::move(stream)};
      }
    }
    auto stream = std::make_unique<output::CodeStream>();
    addPlace();
    return {*this, std::move(stream)};
  }

 private:
  // For each stream that is made, so that taking it back cannot fail.
  void addPlace() {
    const std::lock_guard lock(lock_);
    free_.reserve(++made_);
  }

  void takeBack(std::unique_ptr<output::CodeStream> stream) noexcept {
    stream->clear();
    const std::lock_guard lock(lock_);
    free_.push_back(std::move(stream));
  }

  log::SpinLock lock_;
  std::vector<std::unique_ptr<output::CodeStream>> free_;
  std::size_t made_ = 0;
};

}  // namespace kiv::session
