// A client like an application that reads pages: the outputs of one network
// decide the inputs of the next one.
//
//   reading_client libBackend.so
//
// A detector finds the numbers on a page, each is cut out and goes through a
// recogniser for its length, and a decoder counts down from the last digit: its
// words and its cache are its next inputs. All outputs are printed with all
// digits. A library that computes nothing leaves zeros, so nothing is found.

#include <algorithm>
#include <cstdio>
#include <map>

#include "library.h"
#include "models.h"
#include "page.h"

namespace reading_client {
namespace {

void print(const char* name, const Floats& values) {
  std::printf("%s:", name);
  for (const float value : values)
    std::printf(" %.9g", static_cast<double>(value));
  std::printf("\n");
}

std::size_t mostLikely(const Floats& word) {
  return static_cast<std::size_t>(std::max_element(word.begin(), word.end()) -
                                  word.begin());
}

// The box of the ink, without the map's reach.
Box inkOf(const Box& box) {
  return {box.left + kReachX, box.top + kReachY, box.width - 2 * kReachX,
          box.height - 2 * kReachY};
}

class Reader {
 public:
  explicit Reader(const Session& session)
      : session_(session), decoder_(makeDecoder(session)) {}

  void read(const Picture& page);

 private:
  std::vector<Floats> recognise(const Picture& line);
  void countDown(const std::vector<Floats>& words);
  const Network& recogniserFor(std::size_t digits);

  const Session& session_;
  Network decoder_;
  // By the number of digits.
  std::map<std::size_t, Network> recognisers_;
};

void Reader::read(const Picture& page) {
  const Network detector = makeDetector(session_, page.width, page.height);
  const Floats map = detector.execute({page.pixels}).front();
  print("map", map);
  const auto boxes = findBoxes({page.width, page.height, map}, 0.5F);
  std::printf("found %zu numbers\n", boxes.size());
  for (const Box& box : boxes) {
    const Box ink = inkOf(box);
    std::printf("number at %zu, %zu of %zu x %zu\n", ink.left, ink.top,
                ink.width, ink.height);
    countDown(recognise(cut(page, ink)));
  }
}

const Network& Reader::recogniserFor(std::size_t digits) {
  const auto found = recognisers_.find(digits);
  if (found != recognisers_.end()) return found->second;
  return recognisers_.emplace(digits, makeRecogniser(session_, digits))
      .first->second;
}

// Each digit as a word of the decoder.
std::vector<Floats> Reader::recognise(const Picture& line) {
  const std::size_t count = (line.width + 1) / kAdvance;
  const Floats digits = recogniserFor(count).execute({line.pixels}).front();
  print("digits", digits);
  std::vector<Floats> words(count, Floats(kWords));
  std::printf("read");
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t digit = 0; digit < 10; ++digit)
      words[i][digit] = digits[digit * count + i];
    std::printf(" %zu", mostLikely(words[i]));
  }
  std::printf("\n");
  return words;
}

void Reader::countDown(const std::vector<Floats>& words) {
  constexpr int kMostSteps = 12;
  Floats word = words.back();
  Floats cache(kCacheLength * kWords);
  for (int i = 0; i < kMostSteps && mostLikely(word) != kEnd; ++i) {
    std::vector<Floats> outputs = decoder_.execute({word, cache});
    word = std::move(outputs[0]);
    cache = std::move(outputs[1]);
    print("next", word);
    print("cache", cache);
    if (mostLikely(word) != kEnd) std::printf("then %zu\n", mostLikely(word));
  }
}

}  // namespace
}  // namespace reading_client

int main(int argc, char** argv) {
  using namespace reading_client;
  if (argc != 2) {
    std::fprintf(stderr, "Usage: reading_client LIBRARY\n");
    return 1;
  }
  try {
    const Library library(argv[1]);
    const Session session(library.api());
    Reader(session).read(drawPage());
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "reading_client: %s\n", error.what());
    return 1;
  }
}
