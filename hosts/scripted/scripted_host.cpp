#include "scripted_host.h"

#include <algorithm>

#include "zorvat/error.h"
#include "zorvat/form_script.h"
#include "zorvat/text.h"

namespace zorvat::scripted {
namespace {

class VectorEnumerator final : public Enumerator {
 public:
  explicit VectorEnumerator(const std::vector<Variant>& elements) : elements_(elements) {}
  bool next(Variant& element) override {
    if (next_ >= elements_.size()) return false;
    element = elements_[next_++];
    return true;
  }

 private:
  const std::vector<Variant>& elements_;
  std::size_t next_ = 0;
};

}  // namespace

SaveDialogResult ScriptedUi::save_dialog(const SaveDialogRequest& request) {
  save_requests.push_back(request);
  if (save_answers_.empty()) return {true, {}};  // nobody answers: the dialog is cancelled
  SaveDialogResult answer = save_answers_.front();
  save_answers_.pop_front();
  return answer;
}

void ScriptedUi::message_box(const MessageBoxRequest& request) {
  messages.push_back(request);
}

Answer ScriptedUi::question(const MessageBoxRequest& request, QuestionButtons buttons) {
  messages.push_back(request);
  if (question_answers_.empty())
    return buttons == QuestionButtons::YesNo ? Answer::No : Answer::Cancel;
  const Answer answer = question_answers_.front();
  question_answers_.pop_front();
  return answer;
}

void ScriptedUi::show_help(std::string_view help_file, std::string_view window,
                           unsigned long context) {
  help_calls.push_back({std::string(help_file), std::string(window), context});
}

OpenDialogResult ScriptedUi::open_dialog(const OpenDialogRequest& request) {
  open_requests.push_back(request);
  if (open_answers_.empty()) return {};
  OpenDialogResult answer = open_answers_.front();
  open_answers_.pop_front();
  return answer;
}

void ScriptedUi::answer_form(std::vector<std::string> script) {
  form_answers_.push_back([this, script = std::move(script)](FormModel& form) {
    std::size_t next = 0;
    run_form_script(
        form,
        [&]() -> std::optional<std::string> {
          if (next >= script.size()) return std::nullopt;
          return script[next++];
        },
        [&](int line, const ScriptOutcome& outcome) {
          script_problems.push_back("line " + std::to_string(line) + ": " + outcome.problem);
        });
  });
}

void ScriptedUi::answer_form(std::function<void(FormModel&)> actions) {
  form_answers_.push_back(std::move(actions));
}

void ScriptedUi::show_form(FormModel& form) {
  if (form_answers_.empty()) {
    UiServices::show_form(form);  // raises: nobody is there to answer the form
    return;
  }
  forms_shown.push_back(form.name());
  const auto actions = std::move(form_answers_.front());
  form_answers_.pop_front();
  actions(form);
  if (form.visible()) form.close_box();
}

void ScriptedUi::show_modeless(FormModel& form) {
  if (forms_shown.empty() || forms_shown.back() != form.name()) forms_shown.push_back(form.name());
}

void ScriptedUi::hide_modeless(FormModel&) {
  ++modeless_hidden;
}

std::vector<std::string> ScriptedUi::message_texts() const {
  std::vector<std::string> texts;
  for (const auto& message : messages) texts.push_back(message.text);
  return texts;
}

void MemoryFiles::write_file(const std::string& path, std::string_view contents) {
  if (auto failure = failures_.find(path); failure != failures_.end())
    raise_runtime(failure->second);
  files[path] = std::string(contents);
  ++writes;
}

MemoryObject::MemoryObject(std::initializer_list<std::pair<std::string, Variant>> properties)
    : properties_(properties) {}

MemoryObject& MemoryObject::set(std::string name, Variant value) {
  for (auto& property : properties_) {
    if (iequals(property.first, name)) {
      property.second = std::move(value);
      return *this;
    }
  }
  properties_.emplace_back(std::move(name), std::move(value));
  return *this;
}

MemoryObject& MemoryObject::remove(std::string_view name) {
  std::erase_if(properties_, [&](const auto& property) { return iequals(property.first, name); });
  return *this;
}

MemoryObject& MemoryObject::add_element(Variant element) {
  collection_ = true;
  elements_.push_back(std::move(element));
  return *this;
}

Variant MemoryObject::get(std::string_view property) const {
  for (const auto& entry : properties_)
    if (iequals(entry.first, property)) return entry.second;
  if (collection_ && iequals(property, "Count"))
    return Variant(static_cast<std::int32_t>(elements_.size()));
  raise_not_supported();
}

std::unique_ptr<Enumerator> MemoryObject::enumerate() const {
  if (!collection_) raise_not_supported();
  return std::make_unique<VectorEnumerator>(elements_);
}

Variant object(std::shared_ptr<MemoryObject> value) {
  return Variant(ObjectRef(std::move(value)));
}

std::shared_ptr<MemoryObject> collection(std::vector<Variant> elements) {
  auto result = std::make_shared<MemoryObject>();
  result->make_collection();
  for (auto& element : elements) result->add_element(std::move(element));
  return result;
}

Variant cards(std::vector<Variant> elements) {
  return object(collection(std::move(elements)));
}

std::shared_ptr<MemoryObject> card(std::string export_id, Variant number) {
  auto result = std::make_shared<MemoryObject>();
  result->set("ExportID", Variant(std::move(export_id)))
      .set("Number", std::move(number))
      .set("Shift", Variant(std::int32_t{1}));
  for (const char* category : {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"})
    result->set(category, Variant(std::int32_t{0}));
  result->set("FirstName", Variant("Ann"))
      .set("MI", Variant(""))
      .set("LastName", Variant("Lee"))
      .set("Badge", Variant("0315"))
      .set("EditREG", Variant(std::int32_t{0}))
      .set("EditOT1", Variant(std::int32_t{0}))
      .set("EditOT2", Variant(std::int32_t{0}))
      .set("PeriodStart", Variant(Date::from_civil(2004, 2, 29)))
      .set("Days", object(collection()));
  return result;
}

}  // namespace zorvat::scripted
