#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "calls.h"

namespace kiv::benchmarks {

// The parts that the benchmarks of time share.

struct Settings {
  std::string library;
  // Exists, on a disk; the benchmarks make their files in it.
  std::filesystem::path directory;
};

// The microseconds that a function takes.
template <typename Function>
double microseconds(const Function& function) {
  const auto start = std::chrono::steady_clock::now();
  function();
  const std::chrono::duration<double, std::micro> time =
      std::chrono::steady_clock::now() - start;
  return time.count();
}

// Makes the calls [0, count), in microseconds for each.
double timeCalls(Call& call, std::size_t count);

double median(std::vector<double> values);

// Gives the blocks of a file back to the disk, while the file keeps its length
// and whoever appends to it notices nothing. So recordings of many gigabytes
// need little room, and the system has nothing to write back meanwhile.
void dropBlocks(const std::filesystem::path& file);

// The cost of calls beside a program that writes the same bytes.
void printTable(const Settings& settings);

// The cost of a tensor, in time and memory, after a million others.
void printMillionTensors(const Settings& settings);

}  // namespace kiv::benchmarks
