// zorvat_form_tests: the setup forms and the progress window of zorvat.dll's Windows
// side, shown and worked as a user does, under Wine.
//
//   zorvat_form_tests [--screenshots=FOLDER] [GoogleTest options]
//
// With --screenshots (under a real display, such as Xvfb) a PNG of every form is
// written into FOLDER. The forms run on this thread in a single-threaded apartment, as
// in the host; the user works them from a second thread.
#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <cstdio>
#include <cstring>

#include "form_tests.h"

namespace zorvat::com::testing {
namespace {
std::filesystem::path the_screenshot_folder;
}  // namespace

const std::filesystem::path& screenshot_folder() {
  return the_screenshot_folder;
}

}  // namespace zorvat::com::testing

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  for (int index = 1; index < argc; ++index)
    if (std::strncmp(argv[index], "--screenshots=", 14) == 0)
      zorvat::com::testing::the_screenshot_folder = argv[index] + 14;
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
    std::printf("zorvat_form_tests: CoInitializeEx failed\n");
    return 2;
  }
  const int result = RUN_ALL_TESTS();
  CoUninitialize();
  std::printf("zorvat_form_tests: finished with exit code %d\n", result);
  std::fflush(stdout);
  return result;
}
