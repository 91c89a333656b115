#include <getopt.h>

#include <cstdlib>
#include <iostream>

#include "kelvra/collector.h"

namespace {

constexpr option long_options[] = {
    {"harvest", no_argument, nullptr, 's'},
    {"help", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
};

[[noreturn]] void usage(char* const* argv) {
  // With argc 0 there is no program name to show.
  const char* program = argv[0] != nullptr ? argv[0] : "";
  std::cerr << "usage: " << program << " [--harvest]" << std::endl;
  std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 0) usage(argv);
  for (;;) {
    const int option = getopt_long(argc, argv, "bf:", long_options, nullptr);
    if (option == -1) return 0;
    if (option != 's') usage(argv);
    harvest();
  }
}
