// What the reconciliation tests share: running an export class in memory, building
// time cards as JSON, and the deterministic random cards.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zorvat/reconcile/reconcile.h"
#include "zorvat/variant.h"

namespace zorvat::testing_support {

// Runs `class_name`'s Execute on a scripted host (Save answered, today 2004-03-08)
// and returns the bytes it wrote.
std::string export_bytes(const std::string& class_name, const Variant& cards,
                         const std::string& setup, const std::string& title = "");

// Cards from JSON text in the command line's card format.
Variant cards_from_json(const std::string& json);

// `count` cards of seeded random time: zero, negative, odd minutes, days with and
// without worked hours.
std::string random_cards_json(std::uint32_t seed, int count);

// What the command printed and its exit status.
struct CommandRun {
  int status;
  std::string out;
  std::string err;
};

// Runs the command in this process, as `zorvat` would with `args`, without a user at
// the keyboard.
CommandRun run_command(const std::vector<std::string>& args);

struct ClassSetup {
  std::string class_name;
  std::string setup;
  std::string title;
};
// Settings for every class and layout the random tests run.
std::vector<ClassSetup> random_test_setups();

std::string read_file_bytes(const std::string& path);

}  // namespace zorvat::testing_support
