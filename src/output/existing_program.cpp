#include "output/existing_program.h"

#include <array>
#include <cstdio>
#include <memory>

#include "format/identifiers.h"
#include "platform/files.h"

namespace kiv::output {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

void visitIdentifiers(const std::string& path,
                      const IdentifierVisitor& visitor) {
  const std::unique_ptr<std::FILE, CloseFile> file(
      platform::openForReading(path));
  if (file == nullptr) return;
  constexpr std::size_t kBlockSize = 1 << 16;
  const auto block = std::make_unique<std::array<char, kBlockSize>>();
  // May go on in the next block.
  std::string word;
  const auto end = [&] {
    const bool isNumber = !word.empty() && word[0] >= '0' && word[0] <= '9';
    if (!word.empty() && !isNumber) visitor(word);
    word.clear();
  };
  std::size_t count = 0;
  do {
    count = std::fread(block->data(), 1, block->size(), file.get());
    for (const char c : std::string_view(block->data(), count)) {
      if (format::isIdentifierCharacter(c)) {
        word += c;
      } else {
        end();
      }
    }
  } while (count == block->size());
  end();
}

}  // namespace kiv::output
