#include "zorvat/export_class.h"

#include <algorithm>

#include "zorvat/error.h"
#include "zorvat/forms.h"
#include "zorvat/text.h"

namespace zorvat {
namespace {}  // namespace

std::string ExportClass::source_of(std::string_view procedure) const {
  std::string source = prog_id();
  source.push_back('.');
  source += procedure;
  return source;
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

std::unique_ptr<ExportClass> ExportRegistry::create(std::string_view name_or_prog_id,
                                                    ExportContext context) const {
  std::string_view name = name_or_prog_id;
  if (name.size() > kProgIdPrefix.size() &&
      iequals(name.substr(0, kProgIdPrefix.size()), kProgIdPrefix))
    name.remove_prefix(kProgIdPrefix.size());
  for (const Entry& entry : entries_)
    if (iequals(entry.class_name, name)) return entry.factory(context);
  return nullptr;
}

std::vector<std::string> ExportRegistry::class_names() const {
  std::vector<std::string> names;
  for (const Entry& entry : entries_) names.push_back(entry.class_name);
  return names;
}

}  // namespace zorvat
