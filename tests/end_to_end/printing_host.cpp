#include "zelsolver/zelsolver.h"

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <iostream>

namespace {

/// Prints in the manner of C and of C++, as narrow or as wide text.
class Printer {
 public:
  explicit Printer(bool wide) : wide_(wide) {}

  void Print(FILE* file, const char* text) const {
    if (wide_)
      std::fwprintf(file, L"%s\n", text);
    else
      std::fprintf(file, "%s\n", text);
  }
  void Stream(std::ostream& narrow, std::wostream& wide, const char* text) const {
    if (wide_)
      wide << text << std::endl;
    else
      narrow << text << std::endl;
  }

 private:
  bool wide_;
};

}  // namespace

/// Prints on both streams in both manners, around calls that fail and that succeed. Ends with the
/// number of calls that did not go as they should. Arguments: a project, a path that isn't one, and
/// "wide" for a host whose text is wide.
int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const Printer printer(argc > 3 && std::strcmp(argv[3], "wide") == 0);
  int failures = 0;
  if (dzel2_hasSurrogate(argv[2]) != 2) ++failures;  // before anything decides on narrow or wide
  printer.Print(stdout, "print before");
  printer.Stream(std::cout, std::wcout, "stream before");
  printer.Stream(std::cerr, std::wcerr, "error before");
  if (dzel2_hasSurrogate(argv[2]) != 2) ++failures;
  printer.Print(stdout, "print between");
  const double outside[3] = {2.5, 0.0, 15.0};
  double out[5];
  if (dzel2_solve(argv[1], 1, outside, 3, 2, out, 5) != 2) ++failures;
  if (dzel2_solve(argv[1], 1, outside, 3, 3, out, 5) != 0) ++failures;
  printer.Print(stderr, "error after");
  printer.Stream(std::cout, std::wcout, "stream after");
  if (!std::cout || !std::cerr || !std::wcout || !std::wcerr) ++failures;
  return failures;
}
