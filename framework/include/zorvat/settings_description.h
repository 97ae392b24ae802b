// What a class's settings string holds, position by position, for people writing one
// without the setup form: each field's name, the values it takes, the value the setup
// form proposes (its design value) and the error the class's check raises for a bad
// value. Each class describes its own fields beside its code; the design values are
// read from a fresh instance of its setup form, so the two cannot drift apart.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zorvat {

// The error the check method raises for a bad value of a field.
struct SettingGuard {
  long number = 0;        // 0: the check does not look at the field
  std::string_view name;  // the error enumeration's member ("errBatchSeqNum"); may be empty
};

constexpr std::string_view unqualified(std::string_view name) {
  const std::size_t scope = name.rfind("::");
  return scope == std::string_view::npos ? name : name.substr(scope + 2);
}

// Guard from an error enumeration member: number and unqualified name.
#define ZORVAT_SETTING_GUARD(member)                          \
  ::zorvat::SettingGuard {                                    \
    static_cast<long>(member), ::zorvat::unqualified(#member) \
  }

struct SettingField {
  SettingField(std::string_view field_name, std::string_view field_values,
               SettingGuard field_guard = {}, bool field_required = false)
      : name(field_name), values(field_values), guard(field_guard), required(field_required) {}

  std::string_view name;    // "Batch Sequence Number"
  std::string_view values;  // what it takes: "0 to 99; advanced by each export"
  SettingGuard guard;
  // An export needs a value here that the form leaves empty (a company code, a pay
  // number): a new user fills it before the first export.
  bool required = false;
};

struct SettingDescription {
  std::size_t position = 0;
  std::string name;
  std::string values;
  std::string design_value;
  SettingGuard guard;
  bool required = false;
};

struct ClassDescription {
  std::string class_name;    // "ADP7"
  std::string prog_id;       // "zorvat.ADP7"
  std::string writes;        // one line: what the export produces
  std::string check_method;  // "ValidateSetupData" or "Validate"
  std::string form;          // "frmADP7"
  std::string form_caption;  // the setup form's title bar: "ADP Version 7.0"
  std::vector<SettingDescription> settings;

  // The settings string a new user starts from: the design values joined with ",".
  std::string defaults() const;
  // The fields that need a value the form leaves empty.
  std::vector<const SettingDescription*> to_fill() const;
};

}  // namespace zorvat
