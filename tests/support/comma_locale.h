#pragma once

#include <clocale>
#include <locale>

namespace kiv::test {

// A process that writes one thousand and a half as "1.000,5": in C++ streams,
// and in C where the system has such a locale.
class CommaLocale {
 public:
  CommaLocale()
      : before_(std::locale::global(std::locale(std::locale(), new Commas))) {
    for (const char* name : {"de_DE.ISO-8859-1", "de_DE.UTF-8", "German"}) {
      if (std::setlocale(LC_ALL, name) != nullptr) break;
    }
  }
  ~CommaLocale() {
    std::locale::global(before_);
    std::setlocale(LC_ALL, "C");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

 private:
  struct Commas : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };

  std::locale before_;
};

}  // namespace kiv::test
