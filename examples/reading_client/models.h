#pragma once

// The three networks that read a page. Their weights are made, not learned:
//
//   Network detector = makeDetector(session, width, height);
//   Network recogniser = makeRecogniser(session, digits);
//   Network decoder = makeDecoder(session);
//
// One thread at a time.

#include <cstddef>

#include "network.h"

namespace reading_client {

// How far the detector's map reaches beyond the ink, so that the digits of a
// number are one piece.
inline constexpr std::size_t kReachX = 2;
inline constexpr std::size_t kReachY = 1;

// Takes a page and gives a map of its size, above 0.5 near ink.
Network makeDetector(const Session& session, std::size_t width,
                     std::size_t height);

// Takes a picture of so many digits in a row and gives each position's
// probabilities of the ten digits, as [10][digits].
Network makeRecogniser(const Session& session, std::size_t digits);

// The decoder's words: the ten digits and the end.
inline constexpr std::size_t kWords = 11;
inline constexpr std::size_t kEnd = 10;
// Words that the decoder remembers.
inline constexpr std::size_t kCacheLength = 6;

// Takes the probabilities of the last word and the cache of the ones before,
// and gives the probabilities of the next word and the next cache. After each
// digit comes the next lower one, after 0 the end.
Network makeDecoder(const Session& session);

}  // namespace reading_client
