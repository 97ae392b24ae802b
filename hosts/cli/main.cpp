#include <iostream>
#include <string>
#include <vector>

#include "app.h"
#include "platform.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const std::vector<std::string> args(argv + 1, argv + argc);
  return zorvat::cli::run(args, std::cout, std::cerr, zorvat::cli::interactive_session());
}
