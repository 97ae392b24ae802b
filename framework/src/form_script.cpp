#include "zorvat/form_script.h"

#include <cctype>
#include <charconv>

#include "zorvat/unicode.h"

namespace zorvat {
namespace {

std::string_view trim_left(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  return text;
}

std::string_view trim_right(std::string_view text) {
  while (!text.empty() &&
         (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' || text.back() == '\n'))
    text.remove_suffix(1);
  return text;
}

// Splits the first word off `rest` (up to one blank; the rest keeps its blanks).
std::string_view next_word(std::string_view& rest) {
  rest = trim_left(rest);
  const std::size_t end = rest.find_first_of(" \t");
  std::string_view word = rest.substr(0, end);
  rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
  return word;
}

ScriptOutcome invalid(std::string problem) {
  return {ScriptOutcome::Kind::Invalid, std::move(problem)};
}

bool is_text_box(const Control& control) {
  return control.type == ControlType::TextBox ||
         (control.type == ControlType::ComboBox && control.editable);
}

}  // namespace

std::optional<FormAction> parse_form_action(std::string_view line, std::string& problem) {
  std::string_view rest = trim_right(line);
  FormAction action;
  action.verb = std::string(next_word(rest));
  if (action.verb != "type" && action.verb != "clear" && action.verb != "check" &&
      action.verb != "choose" && action.verb != "select" && action.verb != "leave" &&
      action.verb != "click") {
    problem = "unknown action \"" + action.verb + "\"";
    return std::nullopt;
  }
  std::string_view target = next_word(rest);
  if (target.empty()) {
    problem = "\"" + action.verb + "\" needs a control name";
    return std::nullopt;
  }
  if (const std::size_t open = target.find('('); open != std::string_view::npos) {
    if (target.back() != ')') {
      problem = "bad control name \"" + std::string(target) + "\"";
      return std::nullopt;
    }
    const std::string_view digits = target.substr(open + 1, target.size() - open - 2);
    int index = -1;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), index);
    if (digits.empty() || parsed.ec != std::errc() || parsed.ptr != digits.data() + digits.size() ||
        index < 0) {
      problem = "bad control index in \"" + std::string(target) + "\"";
      return std::nullopt;
    }
    action.index = index;
    target = target.substr(0, open);
  }
  action.name = std::string(target);
  action.argument = std::string(rest);
  return action;
}

ScriptOutcome run_form_action(FormModel& form, std::string_view line) {
  const std::string_view content = trim_left(trim_right(line));
  if (content.empty() || content.front() == '#') return {};

  std::string problem;
  const std::optional<FormAction> action = parse_form_action(content, problem);
  if (!action) return invalid(problem);
  const std::string& verb = action->verb;

  Control* control = form.find(action->name, action->index);
  if (control == nullptr) {
    FormAction named = *action;
    return invalid(
        form.name() + " has no control " +
        (named.index < 0 ? named.name : named.name + "(" + std::to_string(named.index) + ")"));
  }
  const std::string name = control->display_name();
  if (!control->visible || !control->enabled)
    return invalid(name + " is not " + (control->visible ? "enabled" : "visible"));

  auto wrong_type = [&](std::string_view wanted) {
    return invalid(name + " is a " + std::string(control_type_name(control->type)) + ", not " +
                   std::string(wanted));
  };
  auto no_argument = [&]() -> bool { return !trim_right(action->argument).empty(); };

  // What each verb acts on, checked before the focus moves.
  if ((verb == "type" || verb == "clear") && !is_text_box(*control))
    return wrong_type("a text box");
  if (verb == "check" && control->type != ControlType::CheckBox) return wrong_type("a check box");
  if (verb == "choose" && control->type != ControlType::OptionButton)
    return wrong_type("an option button");
  if (verb == "select" && control->type != ControlType::ComboBox) return wrong_type("a combo box");
  if (verb == "leave" && !control->takes_focus()) return invalid(name + " takes no focus");
  if (verb == "click" && control->type != ControlType::CommandButton)
    return wrong_type("a command button");

  int check_value = 0;
  int item = -1;
  if (verb == "check") {
    const std::string_view argument = trim_right(action->argument);
    if (argument != "0" && argument != "1") return invalid("check takes 0 or 1");
    check_value = argument == "1" ? 1 : 0;
  } else if (verb == "select") {
    const std::string wanted(trim_right(action->argument));
    for (std::size_t i = 0; i < control->items.size(); ++i)
      if (control->items[i] == wanted) item = static_cast<int>(i);
    if (item < 0) return invalid(name + " has no item \"" + wanted + "\"");
  } else if (verb != "type" && no_argument()) {
    return invalid(verb + " takes no text");
  }

  if (verb == "leave") {
    if (!form.leave(*control))
      return {ScriptOutcome::Kind::Refused, "the focus stays in " + form.focused()->display_name()};
    return {};
  }
  if (!form.set_focus(*control))
    return {ScriptOutcome::Kind::Refused, "the focus stays in " + form.focused()->display_name()};

  if (verb == "type") {
    // One key a letter, as typed.
    for (std::size_t at = 0; at < action->argument.size();) {
      const Utf8Character letter = decode_utf8(action->argument, at);
      at += letter.bytes;
      form.type_key(*control, static_cast<int>(letter.value));
    }
  } else if (verb == "clear") {
    // One backspace per character, each through the filter and the change check; a
    // check that changes the text itself is followed until the box is empty.
    std::size_t guard = control->text.size() + 16;
    while (!control->text.empty() && guard-- > 0) form.type_key(*control, kBackspace);
  } else if (verb == "check") {
    form.set_value(*control, check_value);
  } else if (verb == "choose") {
    form.set_value(*control, 1);
  } else if (verb == "select") {
    form.select_item(*control, item);
  } else if (verb == "click") {
    form.press(*control);
  }
  return {};
}

bool run_form_script(FormModel& form, const std::function<std::optional<std::string>()>& next_line,
                     const std::function<void(int line_number, const ScriptOutcome&)>& report) {
  int line_number = 0;
  while (form.visible()) {
    const std::optional<std::string> line = next_line();
    if (!line) break;
    ++line_number;
    const ScriptOutcome outcome = run_form_action(form, *line);
    if (outcome.kind == ScriptOutcome::Kind::Done) continue;
    report(line_number, outcome);
    if (outcome.kind == ScriptOutcome::Kind::Invalid) {
      form.close_box();
      return false;
    }
  }
  if (form.visible()) form.close_box();
  return true;
}

}  // namespace zorvat
