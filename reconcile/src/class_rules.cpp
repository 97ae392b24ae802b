// The expectation of each export class: from the cards and the settings, which amounts
// its file carries under which code, and which rule changes or drops the rest. Each
// follows the class's own record rules: its skip rule, its pay codes, its rounding
// (through the same number patterns the class writes with).
#include <algorithm>
#include <array>
#include <cctype>
#include <stdexcept>

#include "adp7/adp7.h"
#include "builtin_formats.h"
#include "generic/generic.h"
#include "intuitpac/intuitpac.h"
#include "pcpaylink/pcpaylink.h"
#include "pcpreview/pcpreview.h"
#include "peachtree/peachtree.h"
#include "primepay/primepay.h"
#include "readers/adp7_reader.h"
#include "readers/generic_reader.h"
#include "readers/intuitpac_reader.h"
#include "readers/pcpaylink_reader.h"
#include "readers/pcpreview_reader.h"
#include "readers/peachtree_reader.h"
#include "readers/primepay_reader.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/reconcile/reconcile.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::reconcile {
namespace {

constexpr std::string_view kSource = "zorvat.reconcile";
constexpr std::size_t kCategoryCount = 7;
constexpr std::array<std::string_view, kCategoryCount> kCategories = {"REG", "OT1", "OT2", "VAC",
                                                                      "HOL", "SIC", "OTH"};
enum Category : std::size_t { kREG, kOT1, kOT2, kVAC, kHOL, kSIC, kOTH };

using Minutes = std::array<double, kCategoryCount>;
using Rows = std::array<std::size_t, kCategoryCount>;

// The number a class writes for `value` through `pattern`, read back as the file
// holds it, scaled by its `decimals`.
std::int64_t pattern_number(const Variant& value, std::string_view pattern, int decimals) {
  const std::string text = format(value, pattern);
  const auto scaled = parse_decimal(text, decimals);
  if (!scaled) throw std::logic_error("unexpected number text \"" + text + "\"");
  return *scaled;
}

// The hundredths a class writes for `value` through `pattern`: hours with two decimals
// or hundredths zero-filled.
Amount written(double value, std::string_view pattern, int decimals) {
  return from_hundredths(pattern_number(Variant(value), pattern, decimals));
}

Amount hours_with_decimals(double minutes, std::string_view pattern) {
  return written(hours::minutes_to_hours(minutes, kSource), pattern, 2);
}

std::string text_through(const std::string& field, std::string_view pattern) {
  return format(Variant(field), pattern);
}

double minutes_of(const Variant& object, std::string_view category) {
  return to_double(get_property(object, category));
}

Minutes card_minutes(const Variant& card) {
  Minutes minutes{};
  for (std::size_t c = 0; c < kCategoryCount; ++c) minutes[c] = minutes_of(card, kCategories[c]);
  return minutes;
}

// A deduction flag of the settings that is set ("1"); a layout that ignores the flags
// does not fail on a missing or odd one.
bool flag_set(const SettingsFields& settings, std::size_t position) {
  return position < settings.size() && field_in_range(settings.at(position), 1, 1);
}

bool total_is_zero(const Minutes& minutes) {
  double total = 0;
  for (double m : minutes) total += m;
  return total == 0;
}

class Builder {
 public:
  explicit Builder(std::string layout) { expectation_.layout = std::move(layout); }

  // A row for each category of a card.
  Rows card(const std::string& employee, const Minutes& minutes) {
    card_start_ = expectation_.records.size();
    Rows rows{};
    for (std::size_t c = 0; c < kCategoryCount; ++c) {
      Row row;
      row.employee = employee;
      row.category = kCategories[c];
      row.input = from_minutes(minutes[c]);
      row.in_file = row.input;
      rows[c] = expectation_.rows.size();
      expectation_.rows.push_back(std::move(row));
    }
    return rows;
  }

  void adjust(std::size_t row, Reason reason, Amount delta) {
    Row& target = expectation_.rows[row];
    for (Adjustment& adjustment : target.adjustments)
      if (adjustment.reason == reason) {
        adjustment.delta += delta;
        target.in_file += delta;
        return;
      }
    target.adjustments.push_back({reason, delta});
    target.in_file += delta;
  }

  // The rule leaves out what is left of the row.
  void drop(std::size_t row, Reason reason) {
    const Amount left = expectation_.rows[row].in_file;
    if (left != 0) adjust(row, reason, -left);
  }
  // The rule leaves out `amount` of the row.
  void drop(std::size_t row, Reason reason, Amount amount) {
    if (amount != 0) adjust(row, reason, -amount);
  }

  // The file carries `amount` of the row under `code`, where the rules so far leave
  // `intended`; the difference is the format's rounding.
  void write(std::size_t row, std::string code, Amount intended, Amount amount, Reason rounding,
             std::optional<CivilDate> date = std::nullopt) {
    if (amount != intended) adjust(row, rounding, amount - intended);
    if (amount != 0) {
      // Time of another category of the same card already under this code.
      for (std::size_t i = card_start_; i < expectation_.records.size(); ++i) {
        const ExpectedRecord& other = expectation_.records[i];
        if (other.code == code && other.date == date && other.row != row && other.amount != 0) {
          adjust(row, Reason::UnderOtherCode, 0);
          break;
        }
      }
    }
    expectation_.records.push_back(
        {expectation_.rows[row].employee, std::move(code), date, amount, row});
  }
  void write(std::size_t row, std::string code, Amount amount, Reason rounding) {
    write(row, std::move(code), expectation_.rows[row].in_file, amount, rounding);
  }

  void control(std::string name, std::int64_t value) {
    expectation_.controls.emplace_back(std::move(name), value);
  }
  std::size_t record_count() const { return expectation_.records.size(); }

  Expectation finish() { return std::move(expectation_); }

 private:
  Expectation expectation_;
  std::size_t card_start_ = 0;
};

// --- Generic: every card, every category, hours "###0.00" -----------------------------

std::string generic_export_id(const Variant& card, bool remove_blanks) {
  std::string id = to_concat_text(get_property(card, "ExportID"));
  if (remove_blanks) std::erase(id, ' ');
  return id;
}

Expectation expect_generic(const Variant& cards, const SettingsFields& settings, std::string_view) {
  const bool remove_blanks = field_is_true(settings.at(formats::Generic::kRemoveBlanks));
  Builder builder("Generic");
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(generic_export_id(card, remove_blanks), minutes);
    for (std::size_t c = 0; c < kCategoryCount; ++c)
      builder.write(rows[c], std::string(kCategories[c]),
                    hours_with_decimals(minutes[c], "###0.00"), Reason::RoundedToHundredths);
  });
  return builder.finish();
}

FileContents read_generic(std::string_view bytes, const SettingsFields& settings, std::string_view,
                          const Variant& cards) {
  const bool remove_blanks = field_is_true(settings.at(formats::Generic::kRemoveBlanks));
  std::vector<std::string> export_ids;
  for_each(cards, [&](const Variant& card) {
    export_ids.push_back(generic_export_id(card, remove_blanks));
  });
  return read_generic_file(bytes, settings, export_ids);
}

// --- ADP7: cards without regular or overtime time are left out ------------------------

Expectation expect_adp7(const Variant& cards, const SettingsFields& settings, std::string_view) {
  using formats::ADP7;
  const bool epip = settings.at(ADP7::kOutputFormat) == "EPIP";
  constexpr ADP7::Position kPayCodes[] = {ADP7::kOT2PayCode, ADP7::kOT2PayCode, ADP7::kOT2PayCode,
                                          ADP7::kVACPayCode, ADP7::kHOLPayCode, ADP7::kSICPayCode,
                                          ADP7::kOTHPayCode};
  Builder builder(epip ? "EPIP" : "CSV");
  // The EPIP trailer's totals, of the cards exported.
  Minutes totals{};
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(to_concat_text(get_property(card, "ExportID")), minutes);
    if (minutes[kREG] + minutes[kOT1] + minutes[kOT2] == 0) {
      for (std::size_t row : rows) builder.drop(row, Reason::SkippedNoRegularOrOvertime);
      return;
    }
    for (std::size_t c = kREG; c <= kOT2; ++c) totals[c] += minutes[c];
    for (std::size_t c = 0; c < kCategoryCount; ++c) {
      const double m = minutes[c];
      const std::string code = c <= kOT1 ? std::string(kCategories[c]) : settings.at(kPayCodes[c]);
      if (epip) {
        if (c > kOT2) {
          builder.drop(rows[c], Reason::NotInLayout);
        } else if (m != 0) {
          builder.write(rows[c], code, written(m / 60.0 * 100.0, "0000000", 0),
                        Reason::RoundedToHundredths);
        }
      } else if (c > kOT1 && code.empty()) {
        builder.drop(rows[c], Reason::NoPayCode);
      } else if (c <= kOT1 || m != 0) {
        builder.write(rows[c], code, written(m / 60, "#####.00", 2), Reason::RoundedToHundredths);
      }
    }
  });
  if (epip) {
    builder.control("batch number",
                    pattern_number(Variant(settings.at(ADP7::kBatchSeqNum)), "00", 0));
    constexpr const char* kTotalNames[] = {"regular hundredths", "overtime 1 hundredths",
                                           "overtime 2 hundredths"};
    for (std::size_t c = kREG; c <= kOT2; ++c)
      if (totals[c] != 0)
        builder.control(kTotalNames[c],
                        pattern_number(Variant(totals[c] / 60.0 * 100.0), "00000000000", 0));
  }
  return builder.finish();
}

FileContents read_adp7(std::string_view bytes, const SettingsFields& settings, std::string_view,
                       const Variant&) {
  return read_adp7_file(bytes, settings);
}

// --- IntuitPAC: every card; the edition in Title picks the layout ---------------------

class NoDialogUi final : public UiServices {
 public:
  SaveDialogResult save_dialog(const SaveDialogRequest&) override { return {}; }
  void message_box(const MessageBoxRequest&) override {}
  Answer question(const MessageBoxRequest&, QuestionButtons) override { return Answer::Cancel; }
  void show_help(std::string_view, std::string_view, unsigned long) override {}
};

class NoFiles final : public OutputFiles {
 public:
  void write_file(const std::string&, std::string_view) override {
    raise_runtime(rt::kPermissionDenied);
  }
};

bool intuitpac_jr(std::string_view title) {
  NoDialogUi ui;
  NoFiles files;
  const formats::IntuitPAC instance({ui, files, system_clock()});
  return instance.IsJr(title);
}

Expectation expect_intuitpac(const Variant& cards, const SettingsFields& settings,
                             std::string_view title) {
  using formats::IntuitPAC;
  const bool jr = intuitpac_jr(title);
  constexpr IntuitPAC::Position kPayCodes[] = {
      IntuitPAC::kPayCode0,   IntuitPAC::kPayCode1,   IntuitPAC::kPayCode2,  IntuitPAC::kVACPayCode,
      IntuitPAC::kHOLPayCode, IntuitPAC::kSICPayCode, IntuitPAC::kOTHPayCode};
  constexpr IntuitPAC::Position kDeductions[] = {IntuitPAC::kVACDeduct, IntuitPAC::kHOLDeduct,
                                                 IntuitPAC::kSICDeduct, IntuitPAC::kOTHDeduct};
  Builder builder(jr ? "Jr" : "full");
  for_each(cards, [&](const Variant& card) {
    const std::string number = to_text(get_property(card, "Number"));
    if (text_length(number) < 4) raise_runtime(rt::kInvalidProcedureCall);
    const std::string employee = format(Variant(std::string(text_right(number, 4))), "0000");
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(employee, minutes);
    for (std::size_t c = 0; c < kCategoryCount; ++c) {
      const double m = minutes[c];
      if (jr) {
        if (c >= kVAC && m != 0 && flag_set(settings, kDeductions[c - kVAC]))
          builder.adjust(rows[c], Reason::DeductionFlagIgnored, 0);
        const std::string code =
            c <= kOT1 ? std::string(kCategories[c]) : text_through(settings.at(kPayCodes[c]), "00");
        builder.write(rows[c], code, written(m / 60.0 * 100.0, c <= kOT1 ? "00000" : "00000000", 0),
                      Reason::RoundedToHundredths);
        continue;
      }
      double whole = double_to_long(m);
      if (c >= kVAC && field_equals_number(settings.at(kDeductions[c - kVAC]), 1)) {
        builder.adjust(rows[c], Reason::WrittenAsDeduction, -2 * from_minutes(m));
        whole = -whole;
      }
      const Amount magnitude = written(std::abs(whole) / 60.0 * 100.0, "0000000", 0);
      builder.write(rows[c], text_through(settings.at(kPayCodes[c]), "00"),
                    whole < 0 ? -magnitude : magnitude, Reason::RoundedToHundredths);
    }
  });
  return builder.finish();
}

FileContents read_intuitpac(std::string_view bytes, const SettingsFields& settings,
                            std::string_view title, const Variant&) {
  return read_intuitpac_file(bytes, settings, intuitpac_jr(title));
}

// --- The classes that leave out a card with no time in sum and negative minutes -------

// Writes each category with positive minutes through `write_category`; drops the rest.
template <class WriteCategory>
void positive_time_only(Builder& builder, const Variant& cards,
                        std::string (*employee_of)(const Variant& card),
                        WriteCategory&& write_category) {
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(employee_of(card), minutes);
    if (total_is_zero(minutes)) {
      for (std::size_t row : rows) builder.drop(row, Reason::SkippedZeroTotal);
      return;
    }
    for (std::size_t c = 0; c < kCategoryCount; ++c) {
      if (minutes[c] > 0)
        write_category(rows[c], c, minutes[c]);
      else
        builder.drop(rows[c], Reason::NegativeNotExported);
    }
  });
}

std::string number_0000(const Variant& card) {
  return format(get_property(card, "Number"), "0000");
}
std::string number_000000(const Variant& card) {
  return format(get_property(card, "Number"), "000000");
}

Expectation expect_pcpaylink(const Variant& cards, const SettingsFields& settings,
                             std::string_view) {
  using formats::PCPayLink;
  constexpr PCPayLink::Position kEarningCodes[] = {PCPayLink::kVACPayCode, PCPayLink::kHOLPayCode,
                                                   PCPayLink::kSICPayCode, PCPayLink::kOTHPayCode};
  Builder builder("PCPayLink");
  std::int64_t employees = 0;
  positive_time_only(builder, cards, number_0000, [&](std::size_t row, std::size_t c, double m) {
    const std::string code =
        c <= kOT2 ? std::string(kCategories[c]) : settings.at(kEarningCodes[c - kVAC]);
    builder.write(row, code, hours_with_decimals(m, "####.00"), Reason::RoundedToHundredths);
    if (c == kREG) ++employees;  // only regular time counts an employee
  });
  // The trailer's counts: the header and each detail are records; the header has two
  // fields, a detail six.
  const auto details = static_cast<std::int64_t>(builder.record_count());
  builder.control("records", 1 + details);
  builder.control("fields", 2 + 6 * details);
  builder.control("employees", employees);
  builder.control("details", details);
  return builder.finish();
}

FileContents read_pcpaylink(std::string_view bytes, const SettingsFields& settings,
                            std::string_view, const Variant&) {
  return read_pcpaylink_file(bytes, settings);
}

Expectation expect_pcpreview(const Variant& cards, const SettingsFields& settings,
                             std::string_view) {
  using formats::PCPreview;
  constexpr PCPreview::Position kPayCodes[] = {
      PCPreview::kRegularPayCode,  PCPreview::kOvertime1PayCode, PCPreview::kOvertime2PayCode,
      PCPreview::kVacationPayCode, PCPreview::kHolidayPayCode,   PCPreview::kSickPayCode,
      PCPreview::kOtherPayCode};
  constexpr PCPreview::Position kDeductions[] = {PCPreview::kVacationDeduct,
                                                 PCPreview::kHolidayDeduct, PCPreview::kSickDeduct,
                                                 PCPreview::kOtherDeduct};
  Builder builder("PCPreview");
  positive_time_only(builder, cards, number_000000, [&](std::size_t row, std::size_t c, double m) {
    if (c >= kVAC && flag_set(settings, kDeductions[c - kVAC]))
      builder.adjust(row, Reason::DeductionFlagIgnored, 0);
    builder.write(row, text_through(settings.at(kPayCodes[c]), "0"),
                  hours_with_decimals(m, "#####.00"), Reason::RoundedToHundredths);
  });
  return builder.finish();
}

FileContents read_pcpreview(std::string_view bytes, const SettingsFields& settings,
                            std::string_view, const Variant&) {
  return read_pcpreview_file(bytes, settings);
}

Expectation expect_primepay(const Variant& cards, const SettingsFields& settings,
                            std::string_view) {
  using formats::PrimePay;
  // Other time goes under the sick pay code.
  constexpr PrimePay::Position kPayCodes[] = {
      PrimePay::kBatchSequenceNumber, PrimePay::kOvertime1PayCode, PrimePay::kOvertime2PayCode,
      PrimePay::kVacationPayCode,     PrimePay::kHolidayPayCode,   PrimePay::kSickPayCode,
      PrimePay::kSickPayCode};
  Builder builder("PrimePay");
  positive_time_only(builder, cards, number_000000, [&](std::size_t row, std::size_t c, double m) {
    const std::string code =
        c == kREG ? std::string("REG") : text_through(settings.at(kPayCodes[c]), "00");
    if (c == kOTH) builder.adjust(row, Reason::UnderOtherCode, 0);
    const std::int32_t hundredths = hours::minutes_to_hundredths(double_to_long(m), kSource);
    builder.write(row, code, from_hundredths(hundredths), Reason::RoundedToHundredths);
  });
  const auto period_end = parse_short_date(format(get_property(cards, "PeriodEnd"), "mm/dd/yy"));
  if (period_end) builder.control("period end", date_number(*period_end));
  const Variant batch(settings.at(PrimePay::kBatchSequenceNumber));
  if (builder.record_count() > 0 && to_double(batch) > 0)
    builder.control("batch number", pattern_number(batch, "000", 0));
  return builder.finish();
}

FileContents read_primepay(std::string_view bytes, const SettingsFields&, std::string_view,
                           const Variant&) {
  return read_primepay_file(bytes);
}

// --- Peachtree: a ticket per day and category, days without worked hours left out ----

Expectation expect_peachtree(const Variant& cards, const SettingsFields& settings,
                             std::string_view) {
  using formats::Peachtree;
  Builder builder("Peachtree");
  // Tickets are numbered on from the batch sequence, one apart.
  double next_ticket = 0;
  std::optional<std::int64_t> first_ticket;
  std::int64_t last_ticket = 0;
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(to_text(get_property(card, "ExportID")), minutes);
    Minutes day_totals{};
    for_each(get_property(card, "Days"), [&](const Variant& day) {
      for (std::size_t c = 0; c < kCategoryCount; ++c)
        day_totals[c] += minutes_of(day, kCategories[c]);
    });
    for (std::size_t c = 0; c < kCategoryCount; ++c)
      if (day_totals[c] != minutes[c])
        builder.adjust(rows[c], Reason::DaysDifferFromCard,
                       from_minutes(day_totals[c]) - from_minutes(minutes[c]));

    for_each(get_property(card, "Days"), [&](const Variant& day) {
      const bool worked = to_double(get_property(day, "Hours")) != 0;
      const auto date =
          parse_short_date(format(Variant(to_date(get_property(day, "DayDate"))), "mm/dd/yy"));
      for (std::size_t c = 0; c < kCategoryCount; ++c) {
        const double m = minutes_of(day, kCategories[c]);
        if (m == 0) continue;
        if (!worked) {
          builder.drop(rows[c], Reason::DaySkipped, from_minutes(m));
          continue;
        }
        const std::int32_t whole = to_long(Variant(m));
        std::string duration = format(Variant(hours::minutes_to_hours(whole, kSource)), "##0");
        duration += ':';
        duration += format(Variant(static_cast<double>(whole % 60)), "00");
        const auto written_minutes = duration_minutes(duration);
        if (!written_minutes) throw std::logic_error("unexpected duration " + duration);
        builder.write(rows[c], settings.at(Peachtree::kPayItemCodeReg + c), from_minutes(m),
                      *written_minutes * kUnitsPerMinute, Reason::DurationWholeHours, date);
        if (!first_ticket) {
          next_ticket = to_double(Variant(settings.at(Peachtree::kBatchSequence)));
          first_ticket = double_to_long(next_ticket);
        }
        last_ticket = double_to_long(next_ticket);
        next_ticket += 1;
      }
    });
  });
  if (first_ticket) {
    builder.control("first ticket number", *first_ticket);
    builder.control("last ticket number", last_ticket);
  }
  return builder.finish();
}

FileContents read_peachtree(std::string_view bytes, const SettingsFields& settings,
                            std::string_view, const Variant&) {
  return read_peachtree_file(bytes, settings);
}

constexpr ClassRules kClassRules[] = {
    {"Generic", expect_generic, read_generic},
    {"ADP7", expect_adp7, read_adp7},
    {"IntuitPAC", expect_intuitpac, read_intuitpac},
    {"PCPayLink", expect_pcpaylink, read_pcpaylink},
    {"PCPreview", expect_pcpreview, read_pcpreview},
    {"Peachtree", expect_peachtree, read_peachtree},
    {"PrimePay", expect_primepay, read_primepay},
};

bool same_name(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

void run_settings_check(const ClassRules& rules, std::string_view setup, std::string_view title) {
  NoDialogUi ui;
  NoFiles files;
  auto instance = formats::builtin_formats().create(rules.class_name, {ui, files, system_clock()});
  if (!instance) throw std::logic_error("export class not registered");
  instance->Title = title;
  instance->SetupData(std::string(setup));
  instance->run_check();
}

const ClassRules* find_class_rules(std::string_view name_or_prog_id) {
  constexpr std::string_view kPrefix = "zorvat.";
  if (name_or_prog_id.size() > kPrefix.size() &&
      same_name(name_or_prog_id.substr(0, kPrefix.size()), kPrefix))
    name_or_prog_id.remove_prefix(kPrefix.size());
  for (const ClassRules& rules : kClassRules)
    if (same_name(rules.class_name, name_or_prog_id)) return &rules;
  return nullptr;
}

std::vector<std::string_view> reconcilable_classes() {
  std::vector<std::string_view> names;
  for (const ClassRules& rules : kClassRules) names.push_back(rules.class_name);
  return names;
}

}  // namespace zorvat::reconcile
