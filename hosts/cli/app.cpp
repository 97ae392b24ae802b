#include "app.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <deque>
#include <iostream>
#include <memory>
#include <optional>

#include "cards_input.h"
#include "cli_ui.h"
#include "code_page_check.h"
#include "code_page_option.h"
#include "describe_command.h"
#include "export_check.h"
#include "export_classes.h"
#include "json_cards.h"
#include "platform.h"
#include "qb2000_check_command.h"
#include "reconcile_command.h"
#include "setup_command.h"
#include "setup_option.h"
#include "simulated_quickbooks.h"
#include "two_digit_year_option.h"
#include "zorvat/error.h"
#include "zorvat/unicode.h"
#include "zorvat/version.h"

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
  std::string code_page = default_code_page_name();
  bool json = false;
  // QB2000: the simulated company, the qbXML log, the answers of the questions.
  std::optional<std::string> qb_company;
  std::optional<std::string> qb_log;
  std::vector<std::string> answers;
};

// What one run produced, reported in plain text or as one JSON object.
struct Report {
  bool result = false;
  std::string setup_data;
  std::optional<std::string> file;
  std::string code_page;
  // Cards (and the settings) with letters the code page lacks.
  std::vector<CardMissingLetters> missing_letters;
  std::vector<std::string> messages;
  std::optional<Error> error;
  // The card being read when the error was raised, when it was raised in one, or the
  // settings position it belongs to.
  std::optional<CardReadPlace> card;
  std::optional<SettingPlace> setting;
  std::string note;  // why the card or the settings position is to blame
  // What the command warns of, the run's outcome aside (a settings string with a field
  // count other than the class reads).
  std::vector<std::string> warnings;
  std::string usage_error;
};

void print_json(std::ostream& out, const Report& report) {
  nlohmann::ordered_json json;
  json["result"] = report.result;
  json["setupData"] = report.setup_data;
  json["file"] = report.file ? nlohmann::ordered_json(*report.file) : nlohmann::ordered_json();
  json["messages"] = report.messages;
  if (!report.warnings.empty()) json["warnings"] = report.warnings;
  if (!report.code_page.empty()) {
    json["codePage"] = report.code_page;
    json["missingLetters"] = missing_letters_json(report.missing_letters);
  }
  if (report.error) {
    json["error"] = {{"number", report.error->number()},
                     {"source", report.error->source()},
                     {"description", report.error->description()}};
    if (report.card)
      json["error"]["card"] = {{"index", report.card->index},
                               {"id", report.card->id},
                               {"property", report.card->property.empty()
                                                ? nlohmann::ordered_json()
                                                : nlohmann::ordered_json(report.card->property)}};
    if (!report.note.empty()) json["error"]["note"] = report.note;
    if (report.setting)
      json["error"]["setting"] = {{"position", report.setting->position},
                                  {"name", report.setting->name}};
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

// The line after an error raised while a card was read: which card, which property.
std::string card_line(const CardReadPlace& card, const std::string& cards_path) {
  std::string line =
      "zorvat: while reading card " + std::to_string(card.index) + " of " + cards_path;
  if (!card.id.empty()) line += " (" + card.id_name + " " + card.id + ")";
  if (!card.property.empty()) line += ", property " + card.property;
  return line;
}

// The line after an error that belongs to a position of the settings string.
std::string setting_line(const SettingPlace& setting, const std::string& note) {
  return "zorvat: while reading " + setting_text(setting) + (note.empty() ? "" : ": " + note);
}

std::string known_classes() {
  std::string list;
  for (const auto& name : formats::export_registry().class_names()) {
    if (!list.empty()) list += ", ";
    list += name;
  }
  return list;
}

// `setup_option` is the export's --setup/--setup-file, which a successful export writes
// the new settings string back through.
int run_class(const Request& request, const SetupOption& setup_option, std::ostream& out,
              std::ostream& err, bool interactive) {
  Date today = system_clock().today();
  if (!request.today.empty()) {
    const auto parsed = parse_iso_date(request.today);
    if (!parsed)
      return usage_error(request, out, err,
                         "--today: \"" + request.today + "\" is not a date (YYYY-MM-DD)");
    today = *parsed;
  }

  const std::unique_ptr<CodePage> code_page = code_page_named(request.code_page);
  if (!code_page)
    return usage_error(request, out, err, unknown_code_page_message(request.code_page));

  Variant cards;
  if (request.command == "export") {
    try {
      cards = load_cards(request.cards_path);
    } catch (const CardsFileError& error) {
      return usage_error(request, out, err, error.what());
    }
  }

  std::unique_ptr<SimulatedQuickBooks> quickbooks;
  if (request.qb_company) {
    try {
      quickbooks = std::make_unique<SimulatedQuickBooks>(*request.qb_company, request.qb_log);
    } catch (const Error& error) {
      return usage_error(request, out, err, "--qb-company: " + error.description());
    } catch (const std::runtime_error& error) {
      return usage_error(request, out, err, error.what());
    }
  } else if (request.qb_log) {
    return usage_error(request, out, err, "--qb-log needs --qb-company");
  }

  std::deque<Answer> answers;
  for (const std::string& answer : request.answers)
    answers.push_back(answer == "yes" ? Answer::Yes : Answer::No);
  // Cards read from standard input leave no terminal to answer the dialogs.
  const bool user_answers =
      interactive && !request.json && !cards_from_standard_input(request.cards_path);
  CommandLineUi ui({request.out, user_answers, !request.json, std::move(answers)});
  SafeOutputFiles output_files(system_file_system(), *code_page);
  RecordingFiles files(output_files);
  FixedDateClock clock(today);
  const ExportContext context{ui, files, clock, quickbooks ? &quickbooks->sessions() : nullptr};

  auto instance = formats::export_registry().create(request.class_name, context);
  if (!instance)
    return usage_error(
        request, out, err,
        "unknown export class \"" + request.class_name + "\" (known: " + known_classes() + ")");
  const bool exports_to_quickbooks =
      request.command == "export" && instance->class_name() == "QB2000";
  if (exports_to_quickbooks && !quickbooks)
    return usage_error(request, out, err,
                       "QB2000 exports to QuickBooks: name the simulated company with "
                       "--qb-company COMPANY.json");
  if (quickbooks && !exports_to_quickbooks)
    return usage_error(request, out, err, "--qb-company applies to the QB2000 export only");

  Report report;
  const ClassDescription description = instance->describe();
  if (auto warning = field_count_warning(description, request.setup))
    report.warnings.push_back(std::move(*warning));
  // The host's order: Title, SetupData, the check method, Execute, SetupData back. An
  // error is put where it belongs: a card and its property, or a settings position.
  ErrorPlace place;
  bool checked = false;
  try {
    instance->Title = request.title;
    instance->SetupData(request.setup);
    instance->run_check();
    checked = true;
    report.result = request.command == "export" ? instance->Execute(cards) : true;
  } catch (const Error& error) {
    report.error = error;
    if (!checked)
      place = place_of_check_error(description, request.setup, request.title, error);
    else
      place = place_of_export_error(description, cards, request.setup, request.title, error,
                                    card_being_read(cards, error.number()));
    report.card = place.card;
    report.setting = place.setting;
    report.note = place.note;
  }
  report.setup_data = instance->SetupData();
  report.file = files.written();
  if (report.file && !instance->written_text_properties().empty()) {
    // Which cards hold letters the file's code page lacks; a file of ASCII alone
    // holds none.
    report.code_page = code_page->name();
    if (!files.wrote_only_ascii() || !code_page->keeps_ascii())
      report.missing_letters = missing_letters(cards, *instance, request.setup, *code_page);
  }
  report.messages = ui.messages();

  const int status = report.error ? kErrorRaised : report.result ? kSucceeded : kReturnedFalse;
  if (!request.json)
    for (const std::string& warning : report.warnings)
      err << "zorvat: warning: " << warning << '\n';
  // The new settings go back to the settings file only when the export succeeded. When
  // they cannot, the export's own report stands, with the error added to it.
  std::optional<Error> not_written_back;
  if (status == kSucceeded && request.command == "export")
    not_written_back = setup_option.write_back(report.setup_data);
  if (request.json) {
    if (not_written_back) report.error = not_written_back;
    print_json(out, report);
  } else if (status == kSucceeded) {
    // The file is written as the classic component writes it; each card whose letters
    // the code page lacks is named once.
    for (const CardMissingLetters& missing : report.missing_letters)
      err << warning_line(missing, report.code_page) << '\n';
    out << (request.command == "export" ? report.setup_data : std::string("ok")) << '\n';
    if (not_written_back) err << "zorvat: " << not_written_back->description() << '\n';
  } else if (status == kErrorRaised) {
    err << "zorvat: error " << report.error->number() << " in " << report.error->source() << ": "
        << report.error->description() << '\n';
    if (report.card)
      err << card_line(*report.card, cards_name(request.cards_path))
          << (report.note.empty() ? "" : ": " + report.note) << '\n';
    if (report.setting) err << setting_line(*report.setting, report.note) << '\n';
  }
  return not_written_back ? kErrorRaised : status;
}

// The commands of `app` but `help`, one line each: name and what it does.
std::string command_list(const CLI::App& app) {
  std::string list;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_name() == "help") continue;
    std::string name = "  " + command->get_name();
    name.resize(std::max<std::size_t>(name.size() + 2, 13), ' ');
    list += name + command->get_description() + '\n';
  }
  return list;
}

// What `zorvat` alone prints: how a command line goes, and the commands.
std::string short_usage(const CLI::App& app) {
  return "usage: zorvat COMMAND [ARGUMENTS]\n\nCommands:\n" + command_list(app) +
         "\n\"zorvat help COMMAND\" prints a command's options, \"zorvat --help-all\" every "
         "command's.\n";
}

// `zorvat help [COMMAND]`: the help of the whole command, or of one command.
int print_help(const CLI::App& app, const std::string& topic, const Request& request,
               std::ostream& out, std::ostream& err) {
  if (topic.empty()) {
    // The whole command's help: app.help() would give the parsed `help` command's.
    out << app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
    return kSucceeded;
  }
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    if (command->get_name() == topic && topic != "help") {
      out << command->help(app.get_name());
      return kSucceeded;
    }
  return usage_error(request, out, err,
                     "help: no command \"" + topic + "\"; the commands are:\n" + command_list(app));
}

}  // namespace

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        bool interactive) {
  Request request;
  request.json = std::find(args.begin(), args.end(), "--json") != args.end();

  CLI::App app{"zorvat: exports a pay period's time cards in a payroll system's import format",
               "zorvat"};
  app.require_subcommand(1);
  app.set_version_flag("--version", ZORVAT_VERSION_TEXT, "print the version and exit");
  app.set_help_all_flag("--help-all", "print the help of every command and exit");

  std::optional<SetupOption> export_setup;
  std::optional<SetupOption> validate_setup;
  auto add_common = [&](CLI::App* command, std::optional<SetupOption>& setup,
                        const std::string& setup_file_help) {
    command->add_option("CLASS", request.class_name, "export class name or ProgID (zorvat.Generic)")
        ->required();
    setup.emplace(*command, request.setup, "the settings string (SetupData)", setup_file_help);
    command->add_option("--title", request.title, "the Title the host assigns");
    command->add_flag("--json", request.json, "print one JSON object with the whole result");
  };
  CLI::App* export_command = app.add_subcommand("export", "export a pay period's time cards");
  add_common(export_command, export_setup,
             "read the settings string from this file (one line); a successful export "
             "writes the new one back");
  export_command
      ->add_option("--cards", request.cards_path, "time-card file (JSON); - for standard input")
      ->required();
  export_command->add_option("--out", request.out,
                             "answer the Save dialog with this path (\"\" for an empty name)");
  export_command->add_option("--today", request.today,
                             "the date the classes take as today (YYYY-MM-DD)");
  export_command->add_option("--code-page", request.code_page,
                             "write the file in this code page (default " +
                                 default_code_page_name() + "; utf-8, windows-1250, 850, ...)");
  export_command->add_option("--qb-company", request.qb_company,
                             "QB2000: the simulated QuickBooks company (JSON) to export to");
  export_command->add_option("--qb-log", request.qb_log,
                             "QB2000: write every request sent, as qbXML, to this file");
  export_command
      ->add_option("--answer", request.answers,
                   "answer the export's next Yes/No question (yes or no; repeat for each)")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->check(CLI::IsMember({"yes", "no"}, CLI::ignore_case));
  CLI::App* validate_command =
      app.add_subcommand("validate", "run only the class's check of its settings");
  add_common(validate_command, validate_setup,
             "read the settings string from this file (one line)");
  const DescribeCommands describe_commands(app);
  SetupCommand setup_command(app);
  ReconcileCommands reconcile_commands(app, *export_command);
  const TwoDigitYearOption two_digit_year(
      {export_command, validate_command, app.get_subcommand("reconcile")});
  std::string help_topic;
  CLI::App* help_command =
      app.add_subcommand("help", "print the help of zorvat, or of one command with its options");
  help_command->add_option("COMMAND", help_topic, "the command to explain: export, setup, ...");

  if (args.empty()) {
    // Nothing asked for: how to ask, on stderr, as any other incomplete command line.
    err << short_usage(app);
    return kUsageError;
  }

  std::vector<std::string> reversed(args.rbegin(), args.rend());
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    out << app.help();
    return kSucceeded;
  } catch (const CLI::CallForVersion&) {
    out << "zorvat " << ZORVAT_VERSION_TEXT << '\n';
    return kSucceeded;
  } catch (const CLI::CallForAllHelp&) {
    out << app.help("", CLI::AppFormatMode::All);
    return kSucceeded;
  } catch (const CLI::ParseError& error) {
    return usage_error(request, out, err, std::string(error.what()) + " (see zorvat --help)");
  }

  if (help_command->parsed()) return print_help(app, help_topic, request, out, err);
  two_digit_year.apply();
  for (SetupOption* setup : {&*export_setup, &*validate_setup})
    if (auto problem = setup->read()) return usage_error(request, out, err, *problem);
  if (setup_command.parsed()) return setup_command.run(out, err, interactive);
  // QB2000 writes no file: its check lists the cards QuickBooks' fields cannot take.
  if (export_command->parsed() && export_command->get_option("--check")->as<bool>() &&
      names_qb2000(request.class_name))
    return run_qb2000_check(request.cards_path, request.setup, request.json, out, err);
  const ExportOptions export_options{request.class_name, request.cards_path, request.setup,
                                     request.title,      request.code_page,  request.json};
  if (auto status = reconcile_commands.run(export_options, out, err)) return *status;

  if (describe_commands.parsed()) return describe_commands.run(out, err);
  request.command = export_command->parsed() ? "export" : "validate";
  try {
    return run_class(request, export_command->parsed() ? *export_setup : *validate_setup, out, err,
                     interactive);
  } catch (const std::exception& unexpected) {
    // Nothing but a class's raised errors is expected here; say so rather than abort.
    err << "zorvat: internal error: " << unexpected.what() << '\n';
    return kErrorRaised;
  }
}

}  // namespace zorvat::cli
