#include "zorvat/forms.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "zorvat/error.h"
#include "zorvat/export_class.h"
#include "zorvat/unicode.h"
#include "zorvat/variant.h"

namespace zorvat {
namespace {

constexpr std::string_view kSaveCaption = "&Save";
constexpr std::string_view kCancelCaption = "Cancel";
constexpr std::string_view kHelpCaption = "&Help";
constexpr std::string_view kHelpWindow = ">Second";

// The classic button sizes, in twips.
constexpr int kButtonWidth = 1095;
constexpr int kButtonHeight = 375;
constexpr int kButtonGap = 120;

[[noreturn]] void raise_invalid_property_value() {
  raise(kInvalidPropertyValue, kComponentSource, "Invalid property value");
}

thread_local std::vector<std::function<void()>> unloaders;

}  // namespace

std::string_view control_type_name(ControlType type) {
  switch (type) {
    case ControlType::Label:
      return "Label";
    case ControlType::TextBox:
      return "TextBox";
    case ControlType::CheckBox:
      return "CheckBox";
    case ControlType::OptionButton:
      return "OptionButton";
    case ControlType::ComboBox:
      return "ComboBox";
    case ControlType::Frame:
      return "Frame";
    case ControlType::CommandButton:
      return "CommandButton";
    case ControlType::Shape:
      return "Shape";
  }
  return "Control";
}

std::string Control::display_name() const {
  if (index < 0) return name;
  return name + "(" + std::to_string(index) + ")";
}

FormModel::FormModel(std::string name, std::string class_name, std::string form_caption, int width,
                     int height, std::size_t field_count)
    : caption(std::move(form_caption)),
      name_(std::move(name)),
      class_name_(std::move(class_name)),
      width_(width),
      height_(height),
      field_count_(field_count) {}

FormModel::~FormModel() = default;

Control* FormModel::find(std::string_view control_name, int index) {
  return const_cast<Control*>(std::as_const(*this).find(control_name, index));
}

const Control& FormModel::control(std::string_view control_name, int index) const {
  const Control* found = find(control_name, index);
  if (found == nullptr) raise_runtime(rt::kSubscriptOutOfRange);
  return *found;
}

const Control* FormModel::find(std::string_view control_name, int index) const {
  for (const auto& control : controls_) {
    if (control->index != index || control->name.size() != control_name.size()) continue;
    if (std::equal(control->name.begin(), control->name.end(), control_name.begin(),
                   [](char a, char b) { return std::tolower(a) == std::tolower(b); }))
      return control.get();
  }
  return nullptr;
}

Control& FormModel::control(std::string_view control_name, int index) {
  Control* found = find(control_name, index);
  if (found == nullptr) raise_runtime(rt::kSubscriptOutOfRange);
  return *found;
}

std::vector<Control*> FormModel::tab_order() const {
  std::vector<Control*> order;
  for (const auto& control : controls_)
    if (control->takes_focus()) order.push_back(control.get());
  std::stable_sort(order.begin(), order.end(),
                   [](const Control* a, const Control* b) { return a->tab_index < b->tab_index; });
  return order;
}

bool FormModel::OpenForm(std::string& settings, const ExportContext& context,
                         std::string_view title) {
  return guarded("zorvat." + name_ + ".OpenForm", [&] {
    context_ = &context;
    struct Release {
      FormModel& form;
      ~Release() {
        form.context_ = nullptr;
        form.visible_ = false;
      }
    } release{*this};

    saved_ = false;
    prepare(title);
    const SettingsFields fields(settings);
    if (fields.size() == field_count_) fill(fields);
    seeded();

    visible_ = true;
    const std::vector<Control*> order = tab_order();
    focused_ = order.empty() ? nullptr : order.front();
    context.ui.show_form(*this);
    visible_ = false;

    settings = write_back();
    return saved_;
  });
}

std::string FormModel::design_settings(const ExportContext& context, std::string_view title) {
  return guarded("zorvat." + name_ + ".OpenForm", [&] {
    context_ = &context;
    struct Release {
      FormModel& form;
      ~Release() { form.context_ = nullptr; }
    } release{*this};
    prepare(title);
    seeded();
    return write_back();
  });
}

void FormModel::cmdButton_Click(int index) {
  switch (index) {
    case 0:
      hide(true);
      break;
    case 1:
      hide(false);
      break;
    case 2:
      ui().show_help(kHelpFile, kHelpWindow, help_context);
      break;
    default:
      break;
  }
}

bool FormModel::set_focus(Control& target) {
  if (focused_ == &target) return true;
  if (focused_ != nullptr && focused_->validate && target.causes_validation) {
    bool cancel = false;
    focused_->validate(cancel);
    if (cancel) return false;
  }
  focused_ = &target;
  return true;
}

bool FormModel::leave(Control& control) {
  if (!set_focus(control)) return false;
  const std::vector<Control*> order = tab_order();
  auto here = std::find(order.begin(), order.end(), &control);
  if (here == order.end() || order.size() < 2) {
    // Nothing else takes the focus: the check still runs as the focus goes.
    if (control.validate) {
      bool cancel = false;
      control.validate(cancel);
      return !cancel;
    }
    return true;
  }
  ++here;
  return set_focus(here == order.end() ? *order.front() : **here);
}

int FormModel::filter_key(Control& box, int key_ascii) {
  if (box.key_press) box.key_press(key_ascii);
  return key_ascii;
}

bool FormModel::type_key(Control& box, int key_ascii, bool replace_all) {
  const int key = filter_key(box, key_ascii);
  if (key == 0) return false;
  std::string text = box.text;
  if (key == kBackspace) {
    if (replace_all)
      text.clear();
    else if (!text.empty())
      text.erase(text.size() - last_character_bytes(text));
  } else if (key >= 32 && key <= 0x10FFFF) {
    // The key's character; the box's length counts letters.
    if (replace_all) text.clear();
    if (box.max_length != 0 && text_length(text) >= box.max_length) return false;
    append_utf8(text, static_cast<char32_t>(key));
  } else {
    return false;
  }
  set_text(box, std::move(text));
  return true;
}

void FormModel::set_text(Control& box, std::string text) {
  if (box.text == text) return;
  box.text = std::move(text);
  if (box.type == ControlType::ComboBox) {
    auto item = std::find(box.items.begin(), box.items.end(), box.text);
    box.list_index = item == box.items.end() ? -1 : static_cast<int>(item - box.items.begin());
  }
  if (box.change) box.change();
}

void FormModel::set_value(Control& button, int value) {
  if (button.value == value) return;
  button.value = value;
  if (button.type == ControlType::OptionButton && value != 0) {
    for (const auto& other : controls_) {
      if (other.get() != &button && other->type == ControlType::OptionButton &&
          other->container == button.container)
        other->value = 0;
    }
  }
  if (button.click) button.click();
}

void FormModel::select_item(Control& combo, int list_index) {
  if (list_index < -1 || list_index >= static_cast<int>(combo.items.size()))
    raise_invalid_property_value();
  combo.list_index = list_index;
  const std::string text = list_index < 0 ? std::string() : combo.items[list_index];
  if (combo.text != text) {
    combo.text = text;
    // An editable combo reports its new text as a change; a drop-down list only
    // the click.
    if (combo.editable && combo.change) combo.change();
  }
  if (combo.click) combo.click();
}

void FormModel::press(Control& button) {
  if (button.click) button.click();
}

void FormModel::close_box() {
  hide(false);
}

Control& FormModel::add(Control control) {
  const bool focusable = control.type != ControlType::Label && control.type != ControlType::Frame &&
                         control.type != ControlType::Shape;
  if (focusable) control.tab_index = next_tab_index_++;
  controls_.push_back(std::make_unique<Control>(std::move(control)));
  return *controls_.back();
}

Control& FormModel::add(ControlType type, std::string control_name, int index,
                        std::string control_caption, Layout layout, std::string container) {
  Control control;
  control.type = type;
  control.name = std::move(control_name);
  control.index = index;
  control.caption = std::move(control_caption);
  control.layout = layout;
  control.container = std::move(container);
  return add(std::move(control));
}

Control& FormModel::label(std::string control_name, int index, std::string label_caption,
                          Layout layout, std::string container) {
  return add(ControlType::Label, std::move(control_name), index, std::move(label_caption), layout,
             std::move(container));
}

Control& FormModel::frame(std::string control_name, std::string frame_caption, Layout layout) {
  return add(ControlType::Frame, std::move(control_name), -1, std::move(frame_caption), layout);
}

Control& FormModel::text_box(std::string control_name, int index, std::string text, Layout layout,
                             std::size_t max_length, std::string container) {
  Control& box =
      add(ControlType::TextBox, std::move(control_name), index, {}, layout, std::move(container));
  box.text = std::move(text);
  box.max_length = max_length;
  return box;
}

Control& FormModel::check_box(std::string control_name, int index, std::string check_caption,
                              Layout layout, std::string container) {
  return add(ControlType::CheckBox, std::move(control_name), index, std::move(check_caption),
             layout, std::move(container));
}

Control& FormModel::option_button(std::string control_name, int index, std::string option_caption,
                                  Layout layout, std::string container) {
  return add(ControlType::OptionButton, std::move(control_name), index, std::move(option_caption),
             layout, std::move(container));
}

Control& FormModel::combo_box(std::string control_name, std::vector<std::string> items,
                              bool editable, Layout layout, std::string container) {
  Control& box =
      add(ControlType::ComboBox, std::move(control_name), -1, {}, layout, std::move(container));
  box.items = std::move(items);
  box.editable = editable;
  return box;
}

Control& FormModel::shape(std::string control_name, Layout layout, bool filled) {
  Control& added = add(ControlType::Shape, std::move(control_name), -1, {}, layout);
  added.filled = filled;
  return added;
}

Control& FormModel::command_button(std::string control_name, int index, std::string button_caption,
                                   Layout layout) {
  Control& added = add(ControlType::CommandButton, std::move(control_name), index,
                       std::move(button_caption), layout);
  if (added.name == "cmdButton")
    added.click = [this, button_index = index] { cmdButton_Click(button_index); };
  return added;
}

void FormModel::standard_buttons(int left, int top) {
  const std::string_view captions[] = {kSaveCaption, kCancelCaption, kHelpCaption};
  for (int i = 0; i < 3; ++i) {
    Control& button =
        command_button("cmdButton", i, std::string(captions[i]),
                       {left + i * (kButtonWidth + kButtonGap), top, kButtonWidth, kButtonHeight});
    button.default_button = i == 0;
    button.cancel_button = i == 1;
  }
}

void FormModel::bind(Control& control, int field, Binding binding) {
  control.field = field;
  control.binding = binding;
}

void FormModel::upper_case_key(int& key_ascii) {
  if (key_ascii >= 'a' && key_ascii <= 'z') key_ascii -= 'a' - 'A';
}

void FormModel::digits_only_key(int& key_ascii) {
  if (key_ascii == kBackspace) return;
  const bool numeric = key_ascii > 0 && key_ascii < 256 &&
                       is_numeric(Variant(std::string(1, static_cast<char>(key_ascii))));
  if (!numeric) key_ascii = 0;
}

void FormModel::prepare(std::string_view) {}

void FormModel::seeded() {}

void FormModel::fill(const SettingsFields& fields) {
  for (const auto& control : controls_)
    if (control->binding != Binding::None && control->field >= 0 &&
        static_cast<std::size_t>(control->field) < fields.size())
      assign_field(*control, fields.at(static_cast<std::size_t>(control->field)));
}

std::string FormModel::write_back() const {
  return join_fields(bound_fields());
}

std::vector<std::string> FormModel::bound_fields() const {
  std::vector<std::string> fields(field_count_);
  for (const auto& control : controls_)
    if (control->binding != Binding::None && control->field >= 0 &&
        static_cast<std::size_t>(control->field) < field_count_)
      fields[static_cast<std::size_t>(control->field)] = field_text(*control);
  return fields;
}

std::string FormModel::join_fields(const std::vector<std::string>& fields) {
  std::string settings;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i != 0) settings.push_back(',');
    settings += fields[i];
  }
  return settings;
}

void FormModel::assign_field(Control& control, const std::string& field) {
  switch (control.binding) {
    case Binding::None:
      break;
    case Binding::Text:
      set_text(control, field);
      break;
    case Binding::CheckValue: {
      const std::int16_t value = to_integer(Variant(field));
      if (value < 0 || value > 2) raise_invalid_property_value();
      set_value(control, value);
      break;
    }
    case Binding::OptionValue:
      set_value(control, to_boolean(Variant(field)) ? 1 : 0);
      break;
    case Binding::ListIndex:
      select_item(control, to_integer(Variant(field)));
      break;
  }
}

std::string FormModel::field_text(const Control& control) const {
  switch (control.binding) {
    case Binding::None:
      return {};
    case Binding::Text:
      return control.text;
    case Binding::CheckValue:
      return std::to_string(control.value);
    case Binding::OptionValue:
      return control.value != 0 ? "True" : "False";
    case Binding::ListIndex:
      return std::to_string(control.list_index);
  }
  return {};
}

UiServices& FormModel::ui() const {
  return context().ui;
}

const ExportContext& FormModel::context() const {
  if (context_ == nullptr) raise_runtime(rt::kInvalidProcedureCall);
  return *context_;
}

void FormModel::show_message(std::string text) {
  MessageBoxRequest request;
  request.text = std::move(text);
  ui().message_box(request);
}

void FormModel::hide(bool saved) {
  saved_ = saved;
  visible_ = false;
}

namespace detail {
void on_unload(std::function<void()> unload) {
  unloaders.push_back(std::move(unload));
}
}  // namespace detail

void unload_forms() {
  std::vector<std::function<void()>> pending;
  pending.swap(unloaders);
  for (auto& unload : pending) unload();
}

void raise_form_not_available(std::string_view prog_id) {
  raise(rt::kInvalidProcedureCall, kComponentSource,
        "The setup form of " + std::string(prog_id) + " is not available on this host");
}

}  // namespace zorvat
