#include "export_check.h"

#include <algorithm>
#include <map>
#include <memory>

#include "card_limits.h"
#include "cli_ui.h"
#include "export_classes.h"
#include "platform.h"
#include "zorvat/automation.h"
#include "zorvat/code_page.h"
#include "zorvat/reconcile/expectation.h"
#include "zorvat/reconcile/reconcile.h"
#include "zorvat/settings.h"

namespace zorvat::cli {
namespace {

// Takes the file a class writes instead of writing it: its text, as the code page
// would hold it (a letter the code page lacks comes back as the conversion makes it).
class FileInMemory final : public OutputFiles {
 public:
  explicit FileInMemory(const CodePage& code_page) : code_page_(code_page) {}
  void write_file(const std::string&, std::string_view contents) override {
    std::string bytes;
    code_page_.encode(contents, bytes);
    text_.reset();
    std::string text;
    code_page_.decode(bytes, text);
    text_ = std::move(text);
  }
  const std::optional<std::string>& text() const { return text_; }

 private:
  const CodePage& code_page_;
  std::optional<std::string> text_;
};

// The user of an export in memory: the Save dialog is answered with a name and what
// it proposed (name and filter) is kept, as a class may put a setting into the file's
// name or extension; message boxes
// are kept; questions get their default answer.
class UiInMemory final : public UiServices {
 public:
  SaveDialogResult save_dialog(const SaveDialogRequest& request) override {
    proposed_ = request.file_name + "|" + request.filter;
    return {false, "checked-export"};
  }
  void message_box(const MessageBoxRequest& request) override { messages_.push_back(request.text); }
  Answer question(const MessageBoxRequest& request, QuestionButtons buttons) override {
    messages_.push_back(request.text);
    return buttons == QuestionButtons::YesNo ? Answer::No : Answer::Cancel;
  }
  void show_help(std::string_view, std::string_view, unsigned long) override {}

  const std::string& proposed() const { return proposed_; }
  const std::vector<std::string>& messages() const { return messages_; }

 private:
  std::string proposed_;
  std::vector<std::string> messages_;
};

// What one export in memory came to.
struct Outcome {
  std::optional<Error> error;
  bool raised_by_check = false;
  std::optional<CardReadPlace> read_place;  // where the cards were read when it was raised
  bool result = false;
  std::optional<std::string> text;  // the file, when one was written
  std::string proposed_name;        // the file name and filter the Save dialog proposed
  std::vector<std::string> messages;
};

// Runs the class as the export command does (Title, SetupData, the check, Execute),
// with the Save dialog answered and the file kept in memory.
Outcome export_in_memory(std::string_view class_name, const Variant& cards,
                         const std::string& setup, const std::string& title,
                         const CodePage& code_page) {
  UiInMemory ui;
  FileInMemory files(code_page);
  FixedDateClock clock(system_clock().today());
  Outcome outcome;
  auto instance = formats::export_registry().create(class_name, {ui, files, clock, nullptr});
  if (!instance) return outcome;
  instance->Title = title;
  instance->SetupData(setup);
  try {
    instance->run_check();
  } catch (const Error& error) {
    outcome.error = error;
    outcome.raised_by_check = true;
    return outcome;
  }
  try {
    outcome.result = instance->Execute(cards);
  } catch (const Error& error) {
    outcome.error = error;
    outcome.read_place = card_being_read(cards, error.number());
  }
  outcome.text = files.text();
  outcome.proposed_name = ui.proposed();
  outcome.messages = ui.messages();
  return outcome;
}

// The same, for the trials that find a settings position: only whether it succeeds and
// what it writes matter.
Outcome export_quietly(std::string_view class_name, const Variant& cards, const std::string& setup,
                       const std::string& title) {
  return export_in_memory(class_name, cards, setup, title, utf8_code_page());
}

bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string trimmed(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return std::string(text);
}

// The field shown as it stands, a CR as "\r", a line feed as "\n" and a tab as "\t".
std::string shown(std::string_view field) {
  std::string text = "\"";
  for (char c : field) {
    if (c == '\r')
      text += "\\r";
    else if (c == '\n')
      text += "\\n";
    else if (c == '\t')
      text += "\\t";
    else
      text += c;
  }
  return text + "\"";
}

SettingPlace place_at(const ClassDescription& description, std::size_t position) {
  SettingPlace place{position, {}};
  if (position < description.settings.size()) place.name = description.settings[position].name;
  return place;
}

// The settings string with `value` at `position`.
std::string with_field(std::string_view setup, std::size_t position, const std::string& value) {
  SettingsFields fields(setup);
  fields.at(position) = value;
  return fields.join();
}

// Runs the class's check alone, as `zorvat validate` does: the error it raises, if any.
std::optional<Error> check_quietly(std::string_view class_name, const std::string& setup,
                                   const std::string& title) {
  UiInMemory ui;
  FileInMemory files(utf8_code_page());
  FixedDateClock clock(system_clock().today());
  auto instance = formats::export_registry().create(class_name, {ui, files, clock, nullptr});
  if (!instance) return std::nullopt;
  try {
    instance->Title = title;
    instance->SetupData(setup);
    instance->run_check();
  } catch (const Error& raised) {
    return raised;
  }
  return std::nullopt;
}

// The values tried in place of a field to see whether it is the one that cannot be
// converted: the field without the blanks or CR around it, the setup form's design
// value, and a plain number for a field the class reads as one.
std::vector<std::string> cleaned_values(const ClassDescription& description, std::size_t position,
                                        const std::string& field) {
  std::vector<std::string> candidates;
  const auto add = [&](std::string candidate) {
    if (candidate != field &&
        std::find(candidates.begin(), candidates.end(), candidate) == candidates.end())
      candidates.push_back(std::move(candidate));
  };
  add(trimmed(field));
  if (position < description.settings.size()) add(description.settings[position].design_value);
  add("0");
  return candidates;
}

// A type mismatch that a settings field explains: the first position whose cleaned-up
// value makes `run` (the check, or the export) raise no error of that number. When no
// single field does (several fields with blanks or a CR around them), the first of
// those fields, if the string with every field trimmed gets through. Puts the position
// and why into `place`; false when the fields do not explain it.
template <typename Run>
bool blame_unconvertible_field(const ClassDescription& description, std::string_view setup,
                               const Error& error, const Run& run, ErrorPlace& place) {
  const SettingsFields fields(setup);
  const auto blame = [&](std::size_t position) {
    place.setting = place_at(description, position);
    place.note = shown(fields.at(position)) + " cannot be converted as " + description.class_name +
                 " reads the field";
    return true;
  };
  const auto explains = [&](const std::string& settings) {
    const std::optional<Error> trial = run(settings);
    return !trial || trial->number() != error.number();
  };
  for (std::size_t position = 0; position < fields.size(); ++position)
    for (const std::string& candidate : cleaned_values(description, position, fields.at(position)))
      if (explains(with_field(setup, position, candidate))) return blame(position);
  SettingsFields all_trimmed = fields;
  std::optional<std::size_t> first_untrimmed;
  for (std::size_t position = 0; position < fields.size(); ++position) {
    all_trimmed.at(position) = trimmed(fields.at(position));
    if (!first_untrimmed && all_trimmed.at(position) != fields.at(position))
      first_untrimmed = position;
  }
  if (first_untrimmed && explains(all_trimmed.join())) return blame(*first_untrimmed);
  return false;
}

// A card with time in every category and on a day, a four-digit employee number and
// names: something of every setting a class uses goes into its file.
constexpr std::string_view kEveryValueCard = R"({"PeriodEnd": "2004-03-06", "cards": [{
  "ExportID": "E1", "Number": 1315, "Shift": 1, "REG": 2400, "OT1": 60, "OT2": 60,
  "VAC": 60, "HOL": 60, "SIC": 60, "OTH": 60, "FirstName": "Ann", "MI": "Q",
  "LastName": "Lee", "Badge": "1315", "EditREG": 0, "EditOT1": 0, "EditOT2": 0,
  "PeriodStart": "2004-02-29",
  "Days": [{"DayDate": "2004-03-01", "Hours": 480, "REG": 480, "OT1": 60, "OT2": 60,
            "VAC": 60, "HOL": 60, "SIC": 60, "OTH": 60}]}]})";

// The positions whose value makes no difference to what the class writes with these
// settings, whatever the cards: the file and its proposed name and filter are the same
// with the setup form's design value in their place. A position that holds the design
// value, or nothing, is not looked at.
std::vector<std::size_t> positions_ignored(const ClassDescription& description,
                                           const std::string& setup, const std::string& title) {
  std::vector<std::size_t> ignored;
  const Variant probe = load_cards_json(std::string(kEveryValueCard), "every value");
  const auto run = [&](const std::string& settings) {
    return export_quietly(description.class_name, probe, settings, title);
  };
  const Outcome given = run(setup);
  if (!given.text) return ignored;
  const SettingsFields fields(setup);
  for (std::size_t position = 0; position < fields.size() && position < description.settings.size();
       ++position) {
    const std::string& design = description.settings[position].design_value;
    if (fields.at(position).empty() || fields.at(position) == design) continue;
    const Outcome other = run(with_field(setup, position, design));
    if (other.text == given.text && other.proposed_name == given.proposed_name)
      ignored.push_back(position);
  }
  return ignored;
}

std::string field_count_text(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " field" : " fields");
}

// The cards with a value past the column its layout gives it, each named with
// `consequence`: the first kCardsNamedAtMost of them, then a count of the others.
std::vector<Finding> cards_past_limits(std::string_view class_name, const Variant& cards,
                                       const std::string& consequence) {
  std::vector<Finding> findings;
  std::size_t index = 0;
  std::size_t more = 0;
  for_each(cards, [&](const Variant& card) {
    const std::size_t at = index++;
    const std::optional<ValuePastLimit> past = value_past_limit(class_name, card);
    if (!past) return;
    if (findings.size() == kCardsNamedAtMost) {
      ++more;
      return;
    }
    CardReadPlace place = card_place(card, at);
    place.property = past->property;
    findings.push_back({Finding::Severity::Error, place, std::nullopt, past->text + consequence});
  });
  if (more > 0)
    findings.push_back({Finding::Severity::Error, std::nullopt, std::nullopt,
                        std::to_string(more) + (more == 1 ? " more card has" : " more cards have") +
                            " a value past its column"});
  return findings;
}

}  // namespace

std::string setting_text(const SettingPlace& setting) {
  std::string text = "settings position " + std::to_string(setting.position);
  if (!setting.name.empty()) text += " (" + setting.name + ")";
  return text;
}

std::string card_text(const CardReadPlace& card) {
  std::string text = "card " + std::to_string(card.index);
  if (!card.id.empty()) text += " (" + card.id_name + " " + card.id + ")";
  if (!card.property.empty()) text += ", property " + card.property;
  return text;
}

namespace {

// "the settings string has 3 fields; PrimePay reads 7"
std::string count_note(const ClassDescription& description, std::size_t has) {
  return "the settings string has " + field_count_text(has) + "; " + description.class_name +
         " reads " + std::to_string(description.settings.size());
}

// "positions 3 to 6", "position 6"
std::string positions_text(std::size_t first, std::size_t last) {
  return first == last ? "position " + std::to_string(first)
                       : "positions " + std::to_string(first) + " to " + std::to_string(last);
}

}  // namespace

std::optional<std::string> field_count_warning(const ClassDescription& description,
                                               std::string_view setup) {
  const std::size_t has = SettingsFields(setup).size();
  const std::size_t reads = description.settings.size();
  if (has == reads) return std::nullopt;
  if (has < reads)
    return count_note(description, has) + " (" + positions_text(has, reads - 1) +
           " missing, from " + description.settings[has].name + " on)";
  return count_note(description, has) + " (" + positions_text(reads, has - 1) + " not read)";
}

ErrorPlace place_of_check_error(const ClassDescription& description, std::string_view setup,
                                std::string_view title, const Error& error) {
  ErrorPlace place;
  const std::size_t has = SettingsFields(setup).size();
  if (error.number() == rt::kSubscriptOutOfRange && has < description.settings.size()) {
    place.setting = place_at(description, has);
    place.note = count_note(description, has);
    return place;
  }
  if (error.number() == rt::kTypeMismatch) {
    const auto checked = [&](const std::string& settings) {
      return check_quietly(description.class_name, settings, std::string(title));
    };
    if (blame_unconvertible_field(description, setup, error, checked, place)) return place;
  }
  for (const SettingDescription& setting : description.settings)
    if (setting.guard.number == error.number()) {
      place.setting = place_at(description, setting.position);
      return place;
    }
  return place;
}

ErrorPlace place_of_export_error(const ClassDescription& description, const Variant& cards,
                                 std::string_view setup, std::string_view title, const Error& error,
                                 std::optional<CardReadPlace> read_place) {
  ErrorPlace place;
  const SettingsFields fields(setup);
  // A missing field is the settings string's fault whichever card was being read.
  if (error.number() == rt::kSubscriptOutOfRange && fields.size() < description.settings.size()) {
    place.setting = place_at(description, fields.size());
    place.note = count_note(description, fields.size());
    return place;
  }
  const bool card_value_explains =
      read_place && !read_place->property.empty() && error.number() != rt::kSubscriptOutOfRange;
  if (error.number() == rt::kTypeMismatch && !card_value_explains) {
    const auto exported = [&](const std::string& settings) {
      return export_quietly(description.class_name, cards, settings, std::string(title)).error;
    };
    if (blame_unconvertible_field(description, setup, error, exported, place)) return place;
  }
  place.card = std::move(read_place);
  if (place.card) {
    const bool read_error =
        error.number() == rt::kTypeMismatch || error.number() == rt::kOverflow ||
        error.number() == rt::kInvalidUseOfNull || error.number() == rt::kObjectDoesntSupport;
    // No value of a card is out of range of a subscript: the card is named, not the
    // property read last.
    if (error.number() == rt::kSubscriptOutOfRange) place.card->property.clear();
    // An error that no read raises, on a card with a value past its layout's column:
    // that value.
    if (!read_error) {
      std::optional<ValuePastLimit> past;
      std::size_t at = 0;
      for_each(cards, [&](const Variant& card) {
        if (at++ == place.card->index) past = value_past_limit(description.class_name, card);
      });
      if (past) {
        place.card->property = past->property;
        place.note = past->text;
        return place;
      }
    }
    if (place.card->property.empty())
      if (std::optional<std::string> limit =
              card_limit_passed(description.class_name, error, cards, place.card->index))
        place.note = *limit;
  }
  return place;
}

std::string finding_line(const Finding& finding) {
  std::string line = finding.severity == Finding::Severity::Error ? "error: " : "warning: ";
  if (finding.card)
    line += card_text(*finding.card) + ": ";
  else if (finding.setting)
    line += setting_text(*finding.setting) + ": ";
  return line + finding.message;
}

std::vector<Finding> check_export(std::string_view class_name, const Variant& cards,
                                  const std::string& setup, const std::string& title,
                                  const CodePage& code_page) {
  std::vector<Finding> findings;
  const reconcile::ClassRules* rules = formats::find_export_class(class_name);
  if (!rules) return findings;
  CommandLineUi quiet({std::nullopt, false, false, {}});
  FixedDateClock clock(system_clock().today());
  const ClassDescription description =
      rules->create({quiet, safe_output_files(), clock, nullptr})->describe();

  auto error = [&](std::optional<CardReadPlace> card, std::optional<SettingPlace> setting,
                   std::string message) {
    findings.push_back(
        {Finding::Severity::Error, std::move(card), std::move(setting), std::move(message)});
  };
  auto warning = [&](std::optional<CardReadPlace> card, std::optional<SettingPlace> setting,
                     std::string message) {
    findings.push_back(
        {Finding::Severity::Warning, std::move(card), std::move(setting), std::move(message)});
  };

  // The settings string as a whole: its field count.
  const SettingsFields fields(setup);
  const std::size_t reads = description.settings.size();
  if (fields.size() < reads) {
    error(std::nullopt, place_at(description, fields.size()),
          *field_count_warning(description, setup));
  } else if (fields.size() > reads) {
    warning(std::nullopt, place_at(description, reads), *field_count_warning(description, setup));
  }

  // The export itself.
  const Outcome outcome = export_in_memory(class_name, cards, setup, title, code_page);
  const auto raised_text = [](const Error& raised) {
    return "error " + std::to_string(raised.number()) + " in " + raised.source() + ": " +
           raised.description();
  };
  if (outcome.error) {
    const ErrorPlace place = outcome.raised_by_check
                                 ? place_of_check_error(description, setup, title, *outcome.error)
                                 : place_of_export_error(description, cards, setup, title,
                                                         *outcome.error, outcome.read_place);
    // A missing field was named above already.
    const bool named_already =
        place.setting && fields.size() < reads && place.setting->position >= fields.size();
    if (!named_already) {
      std::string message = (outcome.raised_by_check ? "the class's check refuses the settings: "
                                                     : "the export would fail: ") +
                            raised_text(*outcome.error);
      if (!place.note.empty()) message += " (" + place.note + ")";
      error(place.card, place.setting, std::move(message));
    }
  } else if (!outcome.result || !outcome.text) {
    std::string message = "the export would write no file";
    for (const std::string& shown_message : outcome.messages)
      message += " (\"" + shown_message + "\")";
    error(std::nullopt, std::nullopt, std::move(message));
  }

  // The file read back through the class's reader, against the cards.
  if (outcome.text && rules->reads_files()) {
    try {
      const reconcile::Reconciliation result =
          reconcile::reconcile(*rules, cards, setup, title, *outcome.text);
      for (const reconcile::Row& row : result.rows)
        if (!row.explained())
          error(std::nullopt, std::nullopt,
                "the file would not read back as the cards: employee " + row.employee + ", " +
                    row.category + ": " + reconcile::hours_text(row.input, 2) +
                    " hours on the cards, " + reconcile::hours_text(row.in_file, 2) +
                    " in the file");
      for (const std::string& problem : result.problems)
        error(std::nullopt, std::nullopt, "the file would not read back: " + problem);
      // The command's reader follows a value past its column; the payroll system reads
      // the record by its columns and takes the columns after it wrongly.
      for (Finding& culprit :
           cards_past_limits(rules->class_name, cards,
                             ": its record is wider than the layout, whose columns the payroll "
                             "system reads it by"))
        findings.push_back(std::move(culprit));
    } catch (const reconcile::ReadError& unreadable) {
      // Which cards make it so: those with a value past a limit their class declares;
      // a setting that makes every file unreadable is named instead of the cards, and
      // with neither the reader's complaint stands alone.
      const std::vector<Finding> unusable = settings_warnings(description, setup);
      std::vector<Finding> culprits;
      if (unusable.empty())
        culprits = cards_past_limits(rules->class_name, cards,
                                     ": its records would not read back as the layout (" +
                                         std::string(unreadable.what()) + ")");
      if (culprits.empty())
        error(std::nullopt, unusable.empty() ? std::nullopt : unusable.back().setting,
              (unusable.empty() ? std::string() : unusable.back().message + "; ") +
                  "the file would not read back as its layout: " + unreadable.what());
      for (Finding& culprit : culprits) findings.push_back(std::move(culprit));
    } catch (const Error& raised) {
      // More time than reconciliation counts is the command's own limit, not the file's:
      // the hours table after the findings raises it as the command's error.
      if (raised.source() != reconcile::kSource)
        error(std::nullopt, std::nullopt, "the file would not read back: " + raised_text(raised));
    }
  }

  // What a payroll system may misread in a file that is written.
  std::optional<Outcome> as_given;  // exported once, when a field has blanks around it
  for (std::size_t position = 0; position < fields.size() && position < reads; ++position) {
    const std::string& field = fields.at(position);
    if (trimmed(field) == field || !outcome.text) continue;
    const Outcome clean =
        export_quietly(class_name, cards, with_field(setup, position, trimmed(field)), title);
    if (!as_given) as_given = export_quietly(class_name, cards, setup, title);
    if (clean.text && clean.text != as_given->text)
      warning(std::nullopt, place_at(description, position),
              shown(field) +
                  " has blanks or a CR around its value; the class takes it as it "
                  "stands and writes another file than for " +
                  shown(trimmed(field)));
  }
  if (outcome.text)
    for (std::size_t position : positions_ignored(description, setup, title))
      warning(std::nullopt, place_at(description, position),
              shown(fields.at(position)) +
                  " makes no difference to the file: " + description.class_name +
                  " writes the same with " + shown(description.settings[position].design_value) +
                  ", so it does not use this position with these settings");
  // A warning about a setting already named by an error is left out.
  for (Finding& finding : card_warnings(description, cards, setup, outcome.text)) {
    const bool named =
        finding.setting && std::any_of(findings.begin(), findings.end(), [&](const Finding& other) {
          return other.severity == Finding::Severity::Error && other.setting &&
                 other.setting->position == finding.setting->position;
        });
    if (!named) findings.push_back(std::move(finding));
  }
  return findings;
}

}  // namespace zorvat::cli
