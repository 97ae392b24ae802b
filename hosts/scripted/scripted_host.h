// A host for tests: the user's answers are scripted in advance, every message box is
// recorded, files are kept in memory, today is fixed, and time cards are built in
// memory with whatever Variant subtypes a test wants.
#pragma once

#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zorvat/automation.h"
#include "zorvat/forms.h"
#include "zorvat/ui_services.h"

namespace zorvat::scripted {

class ScriptedUi final : public UiServices {
 public:
  // Queues the answers of the next Save dialogs.
  void answer_save(std::string file_name) {
    save_answers_.push_back({false, std::move(file_name)});
  }
  void answer_save_cancel() { save_answers_.push_back({true, {}}); }
  void answer_question(Answer answer) { question_answers_.push_back(answer); }
  // Queues the answers of the next Open dialogs (with none queued: cancelled).
  void answer_open(std::string file_name) {
    open_answers_.push_back({false, std::move(file_name)});
  }
  // Queues what the user does on the next form shown: a script of actions, one per
  // line (zorvat/form_script.h), or a function acting on the form. A form left open
  // at the end is closed with its close box. With nothing queued, a form cannot be
  // shown: show_form raises as on a host without forms.
  void answer_form(std::vector<std::string> script);
  void answer_form(std::function<void(FormModel&)> actions);

  SaveDialogResult save_dialog(const SaveDialogRequest& request) override;
  void message_box(const MessageBoxRequest& request) override;
  Answer question(const MessageBoxRequest& request, QuestionButtons buttons) override;
  void show_help(std::string_view help_file, std::string_view window,
                 unsigned long context) override;
  OpenDialogResult open_dialog(const OpenDialogRequest& request) override;
  void show_form(FormModel& form) override;
  void show_modeless(FormModel& form) override;
  void hide_modeless(FormModel& form) override;

  // What the classes asked, in order.
  std::vector<SaveDialogRequest> save_requests;
  std::vector<OpenDialogRequest> open_requests;
  std::vector<MessageBoxRequest> messages;  // message boxes and questions alike
  struct HelpCall {
    std::string help_file;
    std::string window;
    unsigned long context;
  };
  std::vector<HelpCall> help_calls;
  std::vector<std::string> forms_shown;  // form names, modal and modeless alike
  int modeless_hidden = 0;
  // Script lines that were refused or invalid: "line N: problem".
  std::vector<std::string> script_problems;

  std::vector<std::string> message_texts() const;

 private:
  std::deque<SaveDialogResult> save_answers_;
  std::deque<Answer> question_answers_;
  std::deque<OpenDialogResult> open_answers_;
  std::deque<std::function<void(FormModel&)>> form_answers_;
};

// Files kept in memory, by path. A path can be made to fail with a given error.
class MemoryFiles final : public OutputFiles {
 public:
  void write_file(const std::string& path, std::string_view contents) override;
  void fail_path(std::string path, long error_number) { failures_[std::move(path)] = error_number; }
  bool has(const std::string& path) const { return files.count(path) != 0; }
  const std::string& at(const std::string& path) const { return files.at(path); }

  std::map<std::string, std::string> files;
  int writes = 0;

 private:
  std::map<std::string, long> failures_;
};

class FixedClock final : public Clock {
 public:
  explicit FixedClock(Date today) : today_(today) {}
  Date today() const override { return today_; }
  void set(Date today) { today_ = today; }

 private:
  Date today_;
};

// An automation object held in memory: named properties (matched without regard to
// case, as a dispatch interface matches them) and, for a collection, its elements.
class MemoryObject final : public AutomationObject {
 public:
  MemoryObject() = default;
  MemoryObject(std::initializer_list<std::pair<std::string, Variant>> properties);

  MemoryObject& set(std::string name, Variant value);
  MemoryObject& remove(std::string_view name);
  MemoryObject& add_element(Variant element);
  // Makes the object enumerable even while it has no elements.
  MemoryObject& make_collection() {
    collection_ = true;
    return *this;
  }

  using AutomationObject::get;  // declared names are read by their text
  Variant get(std::string_view property) const override;
  std::unique_ptr<Enumerator> enumerate() const override;

 private:
  std::vector<std::pair<std::string, Variant>> properties_;
  std::vector<Variant> elements_;
  bool collection_ = false;
};

// Wraps a MemoryObject as the Variant a class receives.
Variant object(std::shared_ptr<MemoryObject> value);

// A time-card collection of the given cards (each a MemoryObject Variant).
std::shared_ptr<MemoryObject> collection(std::vector<Variant> elements = {});

// The time cards as a class receives them: a collection of `elements`.
Variant cards(std::vector<Variant> elements);

// A card with every property a class may read: ExportID, Number, Shift, the seven
// minute categories (0), FirstName, MI, LastName, Badge, the three edit totals (0),
// PeriodStart and an empty Days collection. Tests override what they need.
std::shared_ptr<MemoryObject> card(std::string export_id, Variant number);

// A scripted host: the three services wired together for ExportContext.
struct Host {
  ScriptedUi ui;
  MemoryFiles files;
  FixedClock clock{Date::from_civil(2004, 3, 8)};
  ExportContext context() { return {ui, files, clock}; }
};

}  // namespace zorvat::scripted
