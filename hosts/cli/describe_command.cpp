#include "describe_command.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>

#include "app.h"
#include "builtin_formats.h"
#include "cli_ui.h"
#include "posix_file_system.h"
#include "zorvat/error.h"

namespace zorvat::cli {
namespace {

// A class created only to describe itself: it shows nothing and writes nothing.
class Described {
 public:
  Described() : ui_({std::nullopt, false, false, {}}) {}

  std::optional<ClassDescription> describe(std::string_view name) {
    auto instance = formats::builtin_formats().create(name, context_);
    if (!instance) return std::nullopt;
    return instance->describe();
  }

  // The class's check on `setup`: the error it raises, or nothing when it passes.
  std::optional<Error> check(std::string_view name, const std::string& setup) {
    auto instance = formats::builtin_formats().create(name, context_);
    instance->SetupData(setup);
    try {
      instance->run_check();
    } catch (const Error& error) {
      return error;
    }
    return std::nullopt;
  }

 private:
  CommandLineUi ui_;
  const ExportContext context_{ui_, safe_output_files(), system_clock()};
};

std::string guard_text(const SettingGuard& guard) {
  if (guard.number == 0) return "-";
  std::string text = std::to_string(guard.number);
  if (!guard.name.empty()) text += " " + std::string(guard.name);
  return text;
}

std::string shown(const std::string& value) {
  return value.empty() ? "(empty)" : "\"" + value + "\"";
}

void print_table(std::ostream& out, const ClassDescription& description) {
  out << description.prog_id << ": " << description.writes << "\n"
      << "Setup form " << description.form << " (\"" << description.form_caption
      << "\"); check method " << description.check_method << ".\n"
      << "Settings string: " << description.settings.size()
      << " fields joined with \",\" (no quoting: a field cannot hold a comma).\n\n";
  out << std::left << std::setw(5) << "Pos" << std::setw(34) << "Name" << std::setw(32)
      << "Design value" << std::setw(26) << "Error"
      << "Values\n";
  for (const SettingDescription& setting : description.settings) {
    out << std::left << std::setw(5) << setting.position << std::setw(34) << setting.name
        << std::setw(32) << shown(setting.design_value) << std::setw(26)
        << guard_text(setting.guard) << setting.values
        << (setting.required && setting.design_value.empty() ? " (fill in)" : "") << '\n';
  }
}

nlohmann::ordered_json to_json(const ClassDescription& description) {
  nlohmann::ordered_json settings = nlohmann::ordered_json::array();
  for (const SettingDescription& setting : description.settings) {
    nlohmann::ordered_json guard;
    if (setting.guard.number != 0)
      guard = {{"number", setting.guard.number}, {"name", std::string(setting.guard.name)}};
    settings.push_back({{"position", setting.position},
                        {"name", setting.name},
                        {"values", setting.values},
                        {"designValue", setting.design_value},
                        {"required", setting.required},
                        {"error", guard}});
  }
  return {{"class", description.class_name},
          {"progId", description.prog_id},
          {"writes", description.writes},
          {"checkMethod", description.check_method},
          {"form", description.form},
          {"formCaption", description.form_caption},
          {"settings", settings},
          {"defaults", description.defaults()}};
}

// --defaults: the design values joined, and what the check says of them.
int print_defaults(std::ostream& out, std::ostream& err, bool json, Described& classes,
                   const ClassDescription& description) {
  const std::string defaults = description.defaults();
  const auto to_fill = description.to_fill();
  const std::optional<Error> refused = classes.check(description.class_name, defaults);
  if (json) {
    nlohmann::ordered_json fill = nlohmann::ordered_json::array();
    for (const SettingDescription* setting : to_fill)
      fill.push_back({{"position", setting->position}, {"name", setting->name}});
    nlohmann::ordered_json check;
    if (refused)
      check = {{"number", refused->number()},
               {"source", refused->source()},
               {"description", refused->description()}};
    out << nlohmann::ordered_json{{"defaults", defaults},
                                  {"accepted", !refused && to_fill.empty()},
                                  {"fill", fill},
                                  {"checkError", check}}
               .dump()
        << '\n';
    return kSucceeded;
  }
  out << defaults << '\n';
  if (!to_fill.empty()) {
    err << "zorvat: fill these fields before exporting:\n";
    for (const SettingDescription* setting : to_fill)
      err << "  position " << setting->position << ", " << setting->name << ": " << setting->values
          << '\n';
  }
  if (refused)
    err << "zorvat: " << description.check_method << " refuses these settings as they stand: error "
        << refused->number() << ": " << refused->description() << '\n';
  return kSucceeded;
}

}  // namespace

DescribeCommands::DescribeCommands(CLI::App& app) {
  describe_ = app.add_subcommand(
      "describe", "what an export class writes and the fields of its settings string");
  describe_->add_option("CLASS", class_name_, "export class name or ProgID (zorvat.Generic)")
      ->required();
  describe_->add_flag("--json", json_, "print one JSON object");
  describe_->add_flag("--defaults", defaults_,
                      "print the settings string the setup form proposes, and what to fill in");
  classes_ = app.add_subcommand("classes", "list the export classes and what each writes");
}

bool DescribeCommands::parsed() const {
  return describe_->parsed() || classes_->parsed();
}

int DescribeCommands::run(std::ostream& out, std::ostream& err) const {
  Described classes;
  if (classes_->parsed()) {
    for (const std::string& name : formats::builtin_formats().class_names()) {
      const ClassDescription description = *classes.describe(name);
      out << std::left << std::setw(18) << description.prog_id << description.writes << '\n';
    }
    return kSucceeded;
  }
  const std::optional<ClassDescription> description = classes.describe(class_name_);
  if (!description) {
    err << "zorvat: unknown export class \"" << class_name_ << "\" (see zorvat classes)\n";
    return kUsageError;
  }
  if (defaults_) return print_defaults(out, err, json_, classes, *description);
  if (json_)
    out << to_json(*description).dump() << '\n';
  else
    print_table(out, *description);
  return kSucceeded;
}

}  // namespace zorvat::cli
