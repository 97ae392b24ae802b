#include "reconcile_command.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <ostream>
#include <sstream>

#include "app.h"
#include "json_cards.h"
#include "zorvat/error.h"
#include "zorvat/reconcile/reconcile.h"

namespace zorvat::cli {
namespace {

using reconcile::Reconciliation;

struct Inputs {
  const std::string& class_name;
  const std::string& cards_path;
  const std::string& setup;
  const std::string& title;
  const std::string* written_path;  // null for a check before writing
  bool json;
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

void print_json(std::ostream& out, const Reconciliation* result, const Failure* failure) {
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
  }
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

int run_analysis(const Inputs& inputs, std::ostream& out, std::ostream& err) {
  const reconcile::ClassRules* rules = reconcile::find_class_rules(inputs.class_name);
  if (!rules) {
    std::string known;
    for (std::string_view name : reconcile::reconcilable_classes()) {
      if (!known.empty()) known += ", ";
      known += name;
    }
    return usage(inputs, out, err,
                 "unknown export class \"" + inputs.class_name + "\" (known: " + known + ")");
  }

  Variant cards;
  try {
    cards = load_cards_file(inputs.cards_path);
  } catch (const CardsFileError& error) {
    return usage(inputs, out, err, error.what());
  }
  std::string written;
  if (inputs.written_path) {
    std::ifstream in(*inputs.written_path, std::ios::binary);
    if (!in) return usage(inputs, out, err, "cannot read \"" + *inputs.written_path + "\"");
    std::ostringstream bytes;
    bytes << in.rdbuf();
    written = bytes.str();
  }

  Reconciliation result;
  try {
    if (inputs.written_path) {
      result = reconcile::reconcile(*rules, cards, inputs.setup, inputs.title, written);
    } else {
      result = reconcile::check(*rules, cards, inputs.setup, inputs.title);
    }
  } catch (const reconcile::ReadError& error) {
    return usage(inputs, out, err, *inputs.written_path + ": " + error.what());
  } catch (const Error& error) {
    return fail(inputs, out, err, {error.number(), error.source(), error.description()});
  }

  if (inputs.json)
    print_json(out, &result, nullptr);
  else
    out << reconcile::table_text(result);
  return result.unexplained() == 0 ? 0 : kUnexplainedDifference;
}

}  // namespace

ReconcileCommands::ReconcileCommands(CLI::App& app, CLI::App& export_command) {
  export_command.add_flag("--check", check_,
                          "write nothing: show what the file would carry of the cards' time");
  reconcile_ = app.add_subcommand(
      "reconcile", "compare a written file with the time cards it was exported from");
  reconcile_->add_option("CLASS", class_name_, "export class name or ProgID")->required();
  reconcile_->add_option("FILE_WRITTEN", written_path_, "the file the class wrote")->required();
  reconcile_->add_option("--cards", cards_path_, "time-card file (JSON)")->required();
  reconcile_->add_option("--setup", setup_, "the settings string (SetupData) of the export");
  reconcile_->add_option("--title", title_, "the Title of the export");
  reconcile_->add_flag("--json", json_, "print one JSON object");
}

std::optional<int> ReconcileCommands::run(const ExportOptions& export_options, std::ostream& out,
                                          std::ostream& err) const {
  if (reconcile_->parsed())
    return run_analysis({class_name_, cards_path_, setup_, title_, &written_path_, json_}, out,
                        err);
  if (check_)
    return run_analysis({export_options.class_name, export_options.cards_path, export_options.setup,
                         export_options.title, nullptr, export_options.json},
                        out, err);
  return std::nullopt;
}

}  // namespace zorvat::cli
