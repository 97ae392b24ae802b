#include "zorvat/export_class.h"

#include <algorithm>
#include <stdexcept>

#include "zorvat/error.h"
#include "zorvat/forms.h"
#include "zorvat/settings.h"
#include "zorvat/text.h"

namespace zorvat {
namespace {}  // namespace

std::string ExportClass::source_of(std::string_view procedure) const {
  std::string source = prog_id();
  source.push_back('.');
  source += procedure;
  return source;
}

ClassDescription ExportClass::describe_settings(FormModel&& fresh_form, std::string_view writes,
                                                const std::vector<SettingField>& fields) {
  const SettingsFields design(fresh_form.design_settings(context_, Title));
  if (design.size() != fields.size())
    throw std::logic_error(prog_id() + ": the form writes " + std::to_string(design.size()) +
                           " settings fields, the description has " +
                           std::to_string(fields.size()));
  ClassDescription description;
  description.class_name = std::string(class_name());
  description.prog_id = prog_id();
  description.writes = std::string(writes);
  description.check_method = std::string(check_method_name());
  description.form = fresh_form.name();
  description.form_caption = fresh_form.caption;
  for (std::size_t position = 0; position < fields.size(); ++position) {
    const SettingField& field = fields[position];
    description.settings.push_back({position, std::string(field.name), std::string(field.values),
                                    design.at(position), field.guard, field.required});
  }
  return description;
}

bool ExportClass::save_text(const SaveDialogRequest& request, std::string_view text) {
  const SaveDialogResult answer = context_.ui.save_dialog(request);
  if (answer.cancelled) return false;
  if (answer.file_name.empty()) {
    MessageBoxRequest message;
    message.text = kNoFileNameSelected;
    context_.ui.message_box(message);
    return false;
  }
  context_.files.write_file(answer.file_name, text);
  return true;
}

bool ExportClass::open_setup_form(FormModel& form) {
  std::string settings = setup_data_;
  const bool saved = form.OpenForm(settings, context_, Title);
  setup_data_ = std::move(settings);
  return saved;
}

void ExportClass::raise_no_setup_form() const {
  raise_form_not_available(prog_id());
}

void ExportRegistry::add(std::string class_name, ExportFactory factory) {
  entries_.push_back({std::move(class_name), std::move(factory)});
}

bool names_class(std::string_view name_or_prog_id, std::string_view class_name) {
  std::string_view name = name_or_prog_id;
  if (name.size() > kProgIdPrefix.size() &&
      iequals(name.substr(0, kProgIdPrefix.size()), kProgIdPrefix))
    name.remove_prefix(kProgIdPrefix.size());
  return iequals(name, class_name);
}

std::unique_ptr<ExportClass> ExportRegistry::create(std::string_view name_or_prog_id,
                                                    ExportContext context) const {
  for (const Entry& entry : entries_)
    if (names_class(name_or_prog_id, entry.class_name)) return entry.factory(context);
  return nullptr;
}

std::vector<std::string> ExportRegistry::class_names() const {
  std::vector<std::string> names;
  for (const Entry& entry : entries_) names.push_back(entry.class_name);
  return names;
}

}  // namespace zorvat
