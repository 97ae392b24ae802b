#include "app.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>

#include "builtin_formats.h"
#include "cli_ui.h"
#include "json_cards.h"
#include "posix_file_system.h"
#include "reconcile_command.h"
#include "setup_command.h"
#include "zorvat/error.h"

namespace zorvat::cli {
namespace {

struct Request {
  std::string command;
  std::string class_name;
  std::string cards_path;
  std::string setup;
  std::string title;
  std::optional<std::string> out;
  std::string today;
  bool json = false;
};

// What one run produced, reported in plain text or as one JSON object.
struct Report {
  bool result = false;
  std::string setup_data;
  std::optional<std::string> file;
  std::vector<std::string> messages;
  std::optional<Error> error;
  std::string usage_error;
};

void print_json(std::ostream& out, const Report& report) {
  nlohmann::ordered_json json;
  json["result"] = report.result;
  json["setupData"] = report.setup_data;
  json["file"] = report.file ? nlohmann::ordered_json(*report.file) : nlohmann::ordered_json();
  json["messages"] = report.messages;
  if (report.error) {
    json["error"] = {{"number", report.error->number()},
                     {"source", report.error->source()},
                     {"description", report.error->description()}};
  } else if (!report.usage_error.empty()) {
    // Not raised by a class: number 0 marks a usage error of the command itself.
    json["error"] = {{"number", 0}, {"source", "zorvat"}, {"description", report.usage_error}};
  } else {
    json["error"] = nullptr;
  }
  // Text from cards and settings may be any bytes; replace what is not UTF-8.
  out << json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

int usage_error(const Request& request, std::ostream& out, std::ostream& err,
                const std::string& message) {
  if (request.json) {
    Report report;
    report.setup_data = request.setup;
    report.usage_error = message;
    print_json(out, report);
  } else {
    err << "zorvat: " << message << '\n';
  }
  return kUsageError;
}

std::string known_classes() {
  std::string list;
  for (const auto& name : formats::builtin_formats().class_names()) {
    if (!list.empty()) list += ", ";
    list += name;
  }
  return list;
}

int run_class(const Request& request, std::ostream& out, std::ostream& err, bool interactive) {
  Date today = system_clock().today();
  if (!request.today.empty()) {
    const auto parsed = parse_iso_date(request.today);
    if (!parsed)
      return usage_error(request, out, err,
                         "--today: \"" + request.today + "\" is not a date (YYYY-MM-DD)");
    today = *parsed;
  }

  Variant cards;
  if (request.command == "export") {
    try {
      cards = load_cards_file(request.cards_path);
    } catch (const CardsFileError& error) {
      return usage_error(request, out, err, error.what());
    }
  }

  CommandLineUi ui({request.out, interactive && !request.json, !request.json});
  RecordingFiles files(safe_output_files());
  FixedDateClock clock(today);
  const ExportContext context{ui, files, clock};

  auto instance = formats::builtin_formats().create(request.class_name, context);
  if (!instance)
    return usage_error(
        request, out, err,
        "unknown export class \"" + request.class_name + "\" (known: " + known_classes() + ")");

  Report report;
  // The host's order: Title, SetupData, the check method, Execute, SetupData back.
  try {
    instance->Title = request.title;
    instance->SetupData(request.setup);
    instance->run_check();
    report.result = request.command == "export" ? instance->Execute(cards) : true;
  } catch (const Error& error) {
    report.error = error;
  }
  report.setup_data = instance->SetupData();
  report.file = files.written();
  report.messages = ui.messages();

  const int status = report.error ? kErrorRaised : report.result ? kSucceeded : kReturnedFalse;
  if (request.json) {
    print_json(out, report);
  } else if (status == kSucceeded) {
    out << (request.command == "export" ? report.setup_data : std::string("ok")) << '\n';
  } else if (status == kErrorRaised) {
    err << "zorvat: error " << report.error->number() << " in " << report.error->source() << ": "
        << report.error->description() << '\n';
  }
  return status;
}

}  // namespace

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        bool interactive) {
  Request request;
  request.json = std::find(args.begin(), args.end(), "--json") != args.end();

  CLI::App app{"zorvat: exports a pay period's time cards in a payroll system's import format",
               "zorvat"};
  app.require_subcommand(1);
  app.set_help_all_flag("--help-all");

  auto add_common = [&](CLI::App* command) {
    command->add_option("CLASS", request.class_name, "export class name or ProgID (zorvat.Generic)")
        ->required();
    command->add_option("--setup", request.setup, "the settings string (SetupData)");
    command->add_option("--title", request.title, "the Title the host assigns");
    command->add_flag("--json", request.json, "print one JSON object with the whole result");
  };
  CLI::App* export_command = app.add_subcommand("export", "export a pay period's time cards");
  add_common(export_command);
  export_command->add_option("--cards", request.cards_path, "time-card file (JSON)")->required();
  export_command->add_option("--out", request.out,
                             "answer the Save dialog with this path (\"\" for an empty name)");
  export_command->add_option("--today", request.today,
                             "the date the classes take as today (YYYY-MM-DD)");
  CLI::App* validate_command =
      app.add_subcommand("validate", "run only the class's check of its settings");
  add_common(validate_command);
  CLI::App* classes_command = app.add_subcommand("classes", "list the export classes");
  const SetupCommand setup_command(app);
  const ReconcileCommands reconcile_commands(app, *export_command);

  std::vector<std::string> reversed(args.rbegin(), args.rend());
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    out << app.help();
    return kSucceeded;
  } catch (const CLI::CallForAllHelp&) {
    out << app.help("", CLI::AppFormatMode::All);
    return kSucceeded;
  } catch (const CLI::ParseError& error) {
    return usage_error(request, out, err, std::string(error.what()) + " (see zorvat --help)");
  }

  if (setup_command.parsed()) return setup_command.run(out, err, interactive);
  const ExportOptions export_options{request.class_name, request.cards_path, request.setup,
                                     request.title, request.json};
  if (auto status = reconcile_commands.run(export_options, out, err)) return *status;

  if (classes_command->parsed()) {
    for (const auto& name : formats::builtin_formats().class_names())
      out << "zorvat." << name << '\n';
    return kSucceeded;
  }
  request.command = export_command->parsed() ? "export" : "validate";
  try {
    return run_class(request, out, err, interactive);
  } catch (const std::exception& unexpected) {
    // Nothing but a class's raised errors is expected here; say so rather than abort.
    err << "zorvat: internal error: " << unexpected.what() << '\n';
    return kErrorRaised;
  }
}

}  // namespace zorvat::cli
