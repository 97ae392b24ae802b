#include "reconcile_command.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <sstream>

#include "app.h"
#include "cards_input.h"
#include "cli_ui.h"
#include "code_page_check.h"
#include "code_page_option.h"
#include "export_check.h"
#include "export_classes.h"
#include "json_cards.h"
#include "platform.h"
#include "zorvat/error.h"
#include "zorvat/reconcile/reconcile.h"
#include "zorvat/unicode.h"

namespace zorvat::cli {
namespace {

using reconcile::Reconciliation;

struct Inputs {
  const std::string& class_name;
  const std::string& cards_path;
  const std::string& setup;
  const std::string& title;
  const std::string* written_path;  // null for a check before writing
  const std::string& code_page;
  bool json;
  bool strict = false;  // a check with warnings only exits 1
};

double json_hours(reconcile::Amount amount) {
  return std::round(reconcile::to_hours(amount) * 10000.0) / 10000.0;
}

// What stopped the analysis, worded as the export command words it: number 0 and
// source "zorvat" for a usage error, otherwise the class's raised error.
struct Failure {
  long number = 0;
  std::string source = "zorvat";
  std::string description;
};

// A check before writing lists the letters the file's code page lacks, card by card.
struct LettersCheck {
  std::string code_page;
  std::vector<CardMissingLetters> missing;
};

nlohmann::ordered_json findings_json(const std::vector<Finding>& findings) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const Finding& finding : findings) {
    nlohmann::ordered_json card;
    if (finding.card)
      card = {{"index", finding.card->index},
              {"id", finding.card->id},
              {"property", finding.card->property.empty()
                               ? nlohmann::ordered_json()
                               : nlohmann::ordered_json(finding.card->property)}};
    nlohmann::ordered_json setting;
    if (finding.setting)
      setting = {{"position", finding.setting->position}, {"name", finding.setting->name}};
    list.push_back(
        {{"severity", finding.severity == Finding::Severity::Error ? "error" : "warning"},
         {"card", card},
         {"setting", setting},
         {"message", finding.message}});
  }
  return list;
}

void print_json(std::ostream& out, const Reconciliation* result, const Failure* failure,
                const LettersCheck* letters = nullptr,
                const std::vector<Finding>* findings = nullptr) {
  nlohmann::ordered_json json;
  if (result) {
    json["class"] = result->class_name;
    json["layout"] = result->layout;
    json["fileRead"] = result->file_read;
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    reconcile::Amount input = 0;
    reconcile::Amount in_file = 0;
    for (const reconcile::Row& row : result->rows) {
      input += row.input;
      in_file += row.in_file;
      if (!row.worth_showing()) continue;
      nlohmann::ordered_json reasons = nlohmann::ordered_json::array();
      for (const reconcile::Adjustment& adjustment : row.adjustments)
        reasons.push_back({{"id", reconcile::reason_id(adjustment.reason)},
                           {"hours", json_hours(adjustment.delta)},
                           {"text", reconcile::reason_text(adjustment.reason)}});
      rows.push_back({{"employee", row.employee},
                      {"category", row.category},
                      {"input", json_hours(row.input)},
                      {"file", json_hours(row.in_file)},
                      {"difference", json_hours(row.difference())},
                      {"reasons", reasons}});
    }
    json["rows"] = rows;
    json["totals"] = {{"input", json_hours(input)},
                      {"file", json_hours(in_file)},
                      {"difference", json_hours(in_file - input)}};
    json["problems"] = result->problems;
    json["unexplained"] = result->unexplained();
    if (letters) {
      json["codePage"] = letters->code_page;
      json["missingLetters"] = missing_letters_json(letters->missing);
    }
  }
  if (findings) json["findings"] = findings_json(*findings);
  json["error"] = failure ? nlohmann::ordered_json({{"number", failure->number},
                                                    {"source", failure->source},
                                                    {"description", failure->description}})
                          : nlohmann::ordered_json();
  out << json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

int fail(const Inputs& inputs, std::ostream& out, std::ostream& err, const Failure& failure) {
  if (inputs.json)
    print_json(out, nullptr, &failure);
  else if (failure.number == 0)
    err << "zorvat: " << failure.description << '\n';
  else
    err << "zorvat: error " << failure.number << " in " << failure.source << ": "
        << failure.description << '\n';
  return failure.number == 0 ? kUsageError : kErrorRaised;
}

int usage(const Inputs& inputs, std::ostream& out, std::ostream& err, std::string message) {
  return fail(inputs, out, err, {0, "zorvat", std::move(message)});
}

// Converts a written file's `bytes` from the code page it was written in to the UTF-8
// text the readers take, into `text`. A code page that passes its bytes on as they are
// (UTF-8) can leave bytes that are no text in it: the file was written in another code
// page, and the message says so.
std::optional<std::string> file_text(std::string_view bytes, const CodePage& code_page,
                                     std::string& text) {
  code_page.decode(bytes, text);
  if (is_ascii(text)) return std::nullopt;
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = decode_utf8(text, at);
    if (!character.valid) {
      char byte[8];
      std::snprintf(byte, sizeof byte, "0x%02X", static_cast<unsigned char>(text[at]));
      return "not " + code_page.name() + " text: byte " + std::to_string(at + 1) + " (" + byte +
             ") is no character in it; name the code page the file was written in with "
             "--code-page (windows-1252, 850, ...)";
    }
    at += character.bytes;
  }
  return std::nullopt;
}

// For a file with letters beyond ASCII that does not read as its layout, or does not
// match its cards: it may have been read in another code page than it was written in.
std::string code_page_note(std::string_view text, std::string_view read_as) {
  if (is_ascii(text)) return {};
  return "the file was read as " + std::string(read_as) +
         "; if it was written in another code page, name that one with --code-page";
}

int run_analysis(const Inputs& inputs, std::ostream& out, std::ostream& err) {
  const reconcile::ClassRules* rules = formats::find_export_class(inputs.class_name);
  if (!rules || !rules->reads_files()) {
    std::string known;
    for (const reconcile::ClassRules& listed : formats::export_classes()) {
      if (!listed.reads_files()) continue;
      if (!known.empty()) known += ", ";
      known += listed.class_name;
    }
    const std::string problem =
        rules ? std::string(rules->class_name) + " writes no file to reconcile"
              : "unknown export class \"" + inputs.class_name + "\"";
    return usage(inputs, out, err, problem + " (reconciled: " + known + ")");
  }

  // The code page the file was (or would be) written in.
  const std::unique_ptr<CodePage> code_page = code_page_named(inputs.code_page);
  if (!code_page) return usage(inputs, out, err, unknown_code_page_message(inputs.code_page));

  Variant cards;
  try {
    cards = load_cards(inputs.cards_path);
  } catch (const CardsFileError& error) {
    return usage(inputs, out, err, error.what());
  }
  std::string written;
  std::string read_as;  // the name of the code page the written file is read in
  if (inputs.written_path) {
    read_as = code_page->name();
    std::ifstream in(*inputs.written_path, std::ios::binary);
    if (!in) return usage(inputs, out, err, "cannot read \"" + *inputs.written_path + "\"");
    std::ostringstream bytes;
    bytes << in.rdbuf();
    if (auto problem = file_text(bytes.str(), *code_page, written))
      return usage(inputs, out, err, *inputs.written_path + ": " + *problem);
  }

  // Before writing: the whole export in memory, read back.
  std::vector<Finding> findings;
  if (!inputs.written_path) {
    findings = check_export(inputs.class_name, cards, inputs.setup, inputs.title, *code_page);
  }
  const auto print_findings = [&] {
    for (const Finding& finding : findings) err << "zorvat: " << finding_line(finding) << '\n';
  };

  Reconciliation result;
  try {
    if (inputs.written_path) {
      result = reconcile::reconcile(*rules, cards, inputs.setup, inputs.title, written);
    } else {
      result = reconcile::check(*rules, cards, inputs.setup, inputs.title);
    }
  } catch (const reconcile::ReadError& error) {
    const std::string note = code_page_note(written, read_as);
    const std::string note_in_parentheses = note.empty() ? note : " (" + note + ")";
    return usage(inputs, out, err,
                 *inputs.written_path + ": " + error.what() + note_in_parentheses);
  } catch (const Error& error) {
    const Failure failure{error.number(), error.source(), error.description()};
    if (inputs.written_path) return fail(inputs, out, err, failure);
    if (inputs.json) {
      print_json(out, nullptr, &failure, nullptr, &findings);
    } else {
      err << "zorvat: error " << failure.number << " in " << failure.source << ": "
          << failure.description << '\n';
      print_findings();
    }
    return kErrorRaised;
  }

  // Letters the code page lacks, worked out as the export works them out.
  std::optional<LettersCheck> letters;
  if (!inputs.written_path) {
    CommandLineUi ui({std::nullopt, false, false, {}});
    FixedDateClock clock(system_clock().today());
    const auto instance = formats::export_registry().create(
        inputs.class_name, ExportContext{ui, safe_output_files(), clock, nullptr});
    if (instance)
      letters = LettersCheck{code_page->name(),
                             missing_letters(cards, *instance, inputs.setup, *code_page)};
  }

  if (inputs.json) {
    print_json(out, &result, nullptr, letters ? &*letters : nullptr,
               inputs.written_path ? nullptr : &findings);
  } else {
    out << reconcile::table_text(result);
    if (letters && !letters->missing.empty()) {
      out << "\nLetters " << letters->code_page
          << " lacks (the file would hold what the conversion makes of them):\n";
      for (const CardMissingLetters& missing : letters->missing)
        out << "  " << missing_letters_line(missing, letters->code_page) << '\n';
    }
  }
  if (!inputs.json) print_findings();
  if (!inputs.written_path) {
    // The check's verdict: errors, then warnings under --strict.
    const auto count = [&](Finding::Severity severity) {
      return std::count_if(findings.begin(), findings.end(),
                           [&](const Finding& finding) { return finding.severity == severity; });
    };
    if (count(Finding::Severity::Error) > 0) return kErrorRaised;
    if (result.unexplained() != 0) return kUnexplainedDifference;
    if (inputs.strict && count(Finding::Severity::Warning) > 0) return kReturnedFalse;
    return kSucceeded;
  }
  if (!inputs.json && result.unexplained() != 0) {
    const std::string note = code_page_note(written, read_as);
    if (!note.empty()) err << "zorvat: " << note << '\n';
  }
  return result.unexplained() == 0 ? 0 : kUnexplainedDifference;
}

}  // namespace

ReconcileCommands::ReconcileCommands(CLI::App& app, CLI::App& export_command) {
  CLI::Option* check = export_command.add_flag(
      "--check", check_,
      "write nothing: run the export in memory, read its file back and show what it would "
      "carry of the cards' time");
  // A plain export has no warnings to be strict about.
  export_command.add_flag("--strict", strict_, "with --check: exit 1 when there are warnings")
      ->needs(check);
  reconcile_ = app.add_subcommand(
      "reconcile", "compare a written file with the time cards it was exported from");
  reconcile_->add_option("CLASS", class_name_, "export class name or ProgID")->required();
  reconcile_->add_option("FILE_WRITTEN", written_path_, "the file the class wrote")->required();
  reconcile_->add_option("--cards", cards_path_, "time-card file (JSON); - for standard input")
      ->required();
  setup_option_.emplace(*reconcile_, setup_, "the settings string (SetupData) of the export",
                        "read the settings string of the export from this file (one line)");
  reconcile_->add_option("--title", title_, "the Title of the export");
  reconcile_->add_flag("--json", json_, "print one JSON object");
  code_page_ = default_code_page_name();
  reconcile_->add_option("--code-page", code_page_,
                         "read the file in this code page (default " + code_page_ +
                             "; utf-8, windows-1250, 850, ...)");
}

std::optional<int> ReconcileCommands::run(const ExportOptions& export_options, std::ostream& out,
                                          std::ostream& err) {
  if (reconcile_->parsed()) {
    const Inputs inputs{class_name_,    cards_path_, setup_, title_,
                        &written_path_, code_page_,  json_};
    if (auto problem = setup_option_->read()) return usage(inputs, out, err, *problem);
    return run_analysis(inputs, out, err);
  }
  if (check_)
    return run_analysis(
        {export_options.class_name, export_options.cards_path, export_options.setup,
         export_options.title, nullptr, export_options.code_page, export_options.json, strict_},
        out, err);
  return std::nullopt;
}

}  // namespace zorvat::cli
