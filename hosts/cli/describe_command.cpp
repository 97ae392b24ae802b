#include "describe_command.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>

#include "app.h"
#include "card_limits.h"
#include "cli_ui.h"
#include "export_classes.h"
#include "platform.h"
#include "zorvat/error.h"
#include "zorvat/unicode.h"

namespace zorvat::cli {
namespace {

// A class created only to describe itself: it shows nothing and writes nothing.
class Described {
 public:
  Described() : ui_({std::nullopt, false, false, {}}) {}

  std::optional<ClassDescription> describe(std::string_view name) {
    auto instance = formats::export_registry().create(name, context_);
    if (!instance) return std::nullopt;
    return instance->describe();
  }

  // The class's check on `setup`: the error it raises, or nothing when it passes.
  std::optional<Error> check(std::string_view name, const std::string& setup) {
    auto instance = formats::export_registry().create(name, context_);
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
  // Each column as wide as its widest text and two blanks, so that no text runs into
  // the next column.
  std::vector<std::array<std::string, 4>> rows = {{"Pos", "Name", "Design value", "Error"}};
  for (const SettingDescription& setting : description.settings)
    rows.push_back({std::to_string(setting.position), setting.name, shown(setting.design_value),
                    guard_text(setting.guard)});
  std::array<std::size_t, 4> widths{};
  for (const auto& row : rows)
    for (std::size_t column = 0; column < widths.size(); ++column)
      widths[column] = std::max(widths[column], text_length(row[column]) + 2);
  const auto print_row = [&](const std::array<std::string, 4>& row, std::string_view values) {
    for (std::size_t column = 0; column < widths.size(); ++column)
      out << row[column] << std::string(widths[column] - text_length(row[column]), ' ');
    out << values << '\n';
  };
  print_row(rows[0], "Values");
  for (std::size_t at = 0; at < description.settings.size(); ++at) {
    const SettingDescription& setting = description.settings[at];
    print_row(
        rows[at + 1],
        setting.values + (setting.required && setting.design_value.empty() ? " (fill in)" : ""));
  }
  const std::vector<CardNeed> needs = card_needs(description.class_name);
  if (needs.empty()) return;
  out << "\nWhat the cards must hold:\n";
  for (const CardNeed& need : needs) out << "  " << need.property << ": " << need.text << '\n';
}

// Markdown table cells: a "|" would end the cell.
std::string cell(std::string_view text) {
  std::string escaped;
  for (char c : text) {
    if (c == '|') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

void print_markdown(std::ostream& out, const ClassDescription& description) {
  out << "### `" << description.prog_id << "`\n\n"
      << "Writes " << cell(description.writes) << ". Setup form `" << description.form
      << "`, check method `" << description.check_method << "`; " << description.settings.size()
      << " fields. The form proposes `" << description.defaults() << "`";
  const auto to_fill = description.to_fill();
  if (!to_fill.empty()) {
    out << "; fill in position";
    if (to_fill.size() > 1) out << 's';
    for (std::size_t i = 0; i < to_fill.size(); ++i)
      out << (i == 0 ? " " : i + 1 == to_fill.size() ? " and " : ", ") << to_fill[i]->position;
    out << " before the first export";
  }
  out << ".\n\n| Pos | Name | Values | Form | Error |\n|---|---|---|---|---|\n";
  for (const SettingDescription& setting : description.settings) {
    out << "| " << setting.position << " | " << cell(setting.name) << " | " << cell(setting.values)
        << " | "
        << (setting.design_value.empty() ? std::string("(empty)")
                                         : "`" + cell(setting.design_value) + "`")
        << " | " << (setting.guard.number == 0 ? std::string("-") : guard_text(setting.guard))
        << " |\n";
  }
  const std::vector<CardNeed> needs = card_needs(description.class_name);
  if (needs.empty()) return;
  out << "\nWhat the cards must hold:\n\n";
  for (const CardNeed& need : needs)
    out << "- `" << need.property << "`: " << cell(need.text) << "\n";
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
  nlohmann::ordered_json needs = nlohmann::ordered_json::array();
  for (const CardNeed& need : card_needs(description.class_name))
    needs.push_back({{"property", need.property}, {"text", need.text}});
  return {{"class", description.class_name},
          {"progId", description.prog_id},
          {"writes", description.writes},
          {"checkMethod", description.check_method},
          {"form", description.form},
          {"formCaption", description.form_caption},
          {"settings", settings},
          {"defaults", description.defaults()},
          {"cards", needs}};
}

// --defaults: the design values joined, and what the check says of them.
int print_defaults(std::ostream& out, std::ostream& err, bool json, Described& classes,
                   const ClassDescription& description) {
  const std::string defaults = description.defaults();
  const auto to_fill = description.to_fill();
  const std::optional<Error> refused = classes.check(description.class_name, defaults);
  // Values the check accepts but that make a file a payroll system cannot use.
  const std::vector<Finding> unusable = settings_warnings(description, defaults);
  if (json) {
    nlohmann::ordered_json warnings = nlohmann::ordered_json::array();
    for (const Finding& finding : unusable)
      warnings.push_back(
          {{"setting", {{"position", finding.setting->position}, {"name", finding.setting->name}}},
           {"message", finding.message}});
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
                                  {"checkError", check},
                                  {"warnings", warnings}}
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
  for (const Finding& finding : unusable)
    err << "zorvat: " << finding_line(finding) << " (the file would be written, but not as a "
        << "payroll system can read it)\n";
  if (refused)
    err << "zorvat: " << description.check_method << " refuses these settings as they stand: error "
        << refused->number() << ": " << refused->description() << '\n';
  return kSucceeded;
}

}  // namespace

DescribeCommands::DescribeCommands(CLI::App& app) {
  describe_ = app.add_subcommand(
      "describe", "what an export class writes and the fields of its settings string");
  CLI::Option* class_option =
      describe_->add_option("CLASS", class_name_, "export class name or ProgID (zorvat.Generic)");
  CLI::Option* all_option =
      describe_->add_flag("--all", all_, "every class, one after the other (with --markdown)");
  class_option->excludes(all_option);
  describe_->add_flag("--json", json_, "print one JSON object");
  describe_->add_flag("--markdown", markdown_, "print the table as Markdown (for the README)");
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
    for (const std::string& name : formats::export_registry().class_names()) {
      const ClassDescription description = *classes.describe(name);
      out << std::left << std::setw(18) << description.prog_id << description.writes << '\n';
    }
    return kSucceeded;
  }
  if (all_) {
    if (!markdown_ || json_ || defaults_) {
      err << "zorvat: describe --all goes with --markdown alone\n";
      return kUsageError;
    }
    const auto names = formats::export_registry().class_names();
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (i > 0) out << '\n';
      print_markdown(out, *classes.describe(names[i]));
    }
    return kSucceeded;
  }
  if (class_name_.empty()) {
    err << "zorvat: describe needs CLASS, or --all --markdown\n";
    return kUsageError;
  }
  const std::optional<ClassDescription> description = classes.describe(class_name_);
  if (!description) {
    err << "zorvat: unknown export class \"" << class_name_ << "\" (see zorvat classes)\n";
    return kUsageError;
  }
  if (defaults_) return print_defaults(out, err, json_, classes, *description);
  if (json_)
    out << to_json(*description).dump() << '\n';
  else if (markdown_)
    print_markdown(out, *description);
  else
    print_table(out, *description);
  return kSucceeded;
}

}  // namespace zorvat::cli
