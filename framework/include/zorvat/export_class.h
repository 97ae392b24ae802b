// The export class contract: what every export format class owes the host.
//
// The host creates a class by its ProgID ("zorvat.Generic"), assigns SetupData,
// optionally calls Setup, runs the class's check method, calls Execute with the time
// cards and reads SetupData back when Setup or Execute returned True. Errors are
// raised (zorvat::Error), never returned.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/settings_description.h"
#include "zorvat/ui_services.h"
#include "zorvat/variant.h"

namespace zorvat {

class FormModel;

inline constexpr std::string_view kProgIdPrefix = "zorvat.";
inline constexpr std::string_view kHelpFile = "HORALISHELP.HLP";
inline constexpr std::string_view kNoFileNameSelected = "No file name selected!";

class ExportClass {
 public:
  explicit ExportClass(ExportContext context) : context_(context) {}
  virtual ~ExportClass() = default;
  ExportClass(const ExportClass&) = delete;
  ExportClass& operator=(const ExportClass&) = delete;

  // The class name ("Generic"); the ProgID is "zorvat." followed by it.
  virtual std::string_view class_name() const = 0;
  std::string prog_id() const { return std::string(kProgIdPrefix) + std::string(class_name()); }

  // Title: a read-write data member with no code behind it; no export reads it
  // (IntuitPAC takes its edition from it).
  std::string Title;

  // SetupData: the settings string; get returns a copy, let stores a copy, with no
  // validation on assignment.
  std::string SetupData() const { return setup_data_; }
  void SetupData(std::string value) { setup_data_ = std::move(value); }

  // Exports the time cards (an automation collection); True when a file was written.
  virtual bool Execute(const Variant& pcTimeCards) = 0;
  // Shows the setup form; True when the user saved.
  virtual bool Setup() = 0;

  // The check method as the host calls it before an export: ValidateSetupData on
  // the current settings, or Generic's Validate with an empty name and value.
  virtual void run_check() = 0;
  // The check method's name ("ValidateSetupData" or "Validate").
  virtual std::string_view check_method_name() const { return "ValidateSetupData"; }

  // What the class writes and what its settings string holds, field by field, with
  // the values its setup form proposes.
  virtual ClassDescription describe() = 0;

  // The time-card properties whose text the class copies into its file (names, IDs,
  // numbers a card may hold as text), so that a host can tell before an export which
  // letters the file's code page lacks. A class that writes no file names none.
  virtual std::vector<std::string_view> written_text_properties() const { return {}; }

 protected:
  ExportContext& context() { return context_; }
  const std::string& setup_data() const { return setup_data_; }

  // "zorvat.<Class>.<procedure>", the source a procedure re-raises with. Each call
  // builds a new string, so a procedure that runs per card keeps its source in a
  // member built once; a final class can build it in the member's initializer, where
  // class_name() is already the class's own.
  std::string source_of(std::string_view procedure) const;

  // The shared file step: asks for the output path with the Save dialog; returns
  // false (nothing written) when the user cancels, or after "No file name selected!"
  // for an empty name; otherwise writes `text` as the whole file and returns true.
  bool save_text(const SaveDialogRequest& request, std::string_view text);

  // Setup's steps with a setup form: shows `form` seeded from SetupData, stores the
  // string the form wrote back (after Save and after Cancel alike) and returns the
  // saved flag.
  bool open_setup_form(FormModel& form);

  // The class's description: its field table (every position, in order) joined with
  // what a fresh instance of its setup form proposes.
  ClassDescription describe_settings(FormModel&& fresh_form, std::string_view writes,
                                     const std::vector<SettingField>& fields);

  // Answer of Setup on a host that cannot show forms.
  [[noreturn]] void raise_no_setup_form() const;

 private:
  ExportContext context_;
  std::string setup_data_;
};

// True when `name_or_prog_id` names the class `class_name`: its class name or its ProgID
// ("zorvat." and the class name), without regard to case.
bool names_class(std::string_view name_or_prog_id, std::string_view class_name);

using ExportFactory = std::function<std::unique_ptr<ExportClass>(ExportContext)>;

// The creatable classes, by class name or ProgID (matched without regard to case).
class ExportRegistry {
 public:
  void add(std::string class_name, ExportFactory factory);
  // nullptr for an unknown name.
  std::unique_ptr<ExportClass> create(std::string_view name_or_prog_id,
                                      ExportContext context) const;
  std::vector<std::string> class_names() const;

 private:
  struct Entry {
    std::string class_name;
    ExportFactory factory;
  };
  std::vector<Entry> entries_;
};

}  // namespace zorvat
