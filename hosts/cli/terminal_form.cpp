#include "terminal_form.h"

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "zorvat/form_script.h"
#include "zorvat/unicode.h"

namespace zorvat::cli {
namespace {

// A caption as shown: the access-key marker "&" dropped ("&&" is a plain "&").
std::string plain_caption(std::string_view caption) {
  std::string plain;
  for (std::size_t i = 0; i < caption.size(); ++i) {
    if (caption[i] == '&' && i + 1 < caption.size()) ++i;
    plain.push_back(caption[i]);
  }
  return plain;
}

// The access key of a button: the letter after "&", else its first letter.
char access_key(std::string_view caption) {
  for (std::size_t i = 0; i + 1 < caption.size(); ++i)
    if (caption[i] == '&' && caption[i + 1] != '&')
      return static_cast<char>(std::toupper(static_cast<unsigned char>(caption[i + 1])));
  for (const char c : caption)
    if (std::isalpha(static_cast<unsigned char>(c)))
      return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return '\0';
}

// The name a control without a caption of its own goes by, read off the layout: the
// label on its row to its left, followed by the column heading above it in its frame
// ("Vacation: Export As Deduction").
std::string label_of(const FormModel& form, const Control& control) {
  const Layout& box = control.layout;
  const Control* row = nullptr;
  const Control* heading = nullptr;
  for (const auto& candidate : form.controls()) {
    if (candidate->type != ControlType::Label || !candidate->visible || candidate->caption.empty())
      continue;
    const Layout& at = candidate->layout;
    const int middle = at.top + at.height / 2;
    if (middle >= box.top - 60 && middle <= box.top + box.height + 60 &&
        at.left + at.width <= box.left + 60) {
      if (row == nullptr || at.left > row->layout.left) row = candidate.get();
    } else if (!control.container.empty() && candidate->container == control.container &&
               at.top + at.height <= box.top + 30 && at.left < box.left + box.width &&
               at.left + at.width > box.left) {
      if (heading == nullptr || at.top > heading->layout.top) heading = candidate.get();
    }
  }
  std::string caption;
  if (row != nullptr) caption = plain_caption(row->caption);
  if (heading != nullptr) {
    if (!caption.empty()) caption += caption.back() == ':' ? " " : ", ";
    caption += plain_caption(heading->caption);
  }
  return caption;
}

struct Entry {
  Control* control;
  std::string caption;  // its own caption, or the label laid out before it
  char key = '\0';      // buttons: the letter that presses them
};

// The controls the user can reach, numbered from 1 in tab order, each with the text
// that names it on screen.
std::vector<Entry> entries_of(const FormModel& form) {
  std::vector<Entry> entries;
  const std::vector<Control*> order = form.tab_order();
  std::vector<char> keys_taken;
  for (Control* control : order) {
    Entry entry{control, plain_caption(control->caption)};
    if (entry.caption.empty()) entry.caption = label_of(form, *control);
    // A box with no label of its own goes by its control name.
    if (entry.caption.empty()) entry.caption = control->display_name();
    if (control->type == ControlType::CommandButton) {
      const char key = access_key(control->caption);
      if (key != '\0' && std::find(keys_taken.begin(), keys_taken.end(), key) == keys_taken.end()) {
        entry.key = key;
        keys_taken.push_back(key);
      }
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::string value_text(const Control& control) {
  switch (control.type) {
    case ControlType::CheckBox:
      return control.value == 1 ? "[x]" : control.value == 2 ? "[-]" : "[ ]";
    case ControlType::OptionButton:
      return control.value != 0 ? "(o)" : "( )";
    case ControlType::TextBox:
    case ControlType::ComboBox:
      return "[" + control.text + "]";
    default:
      return {};
  }
}

void print_help(std::ostream& screen) {
  screen << "  A number edits, ticks or picks that control; a button's letter (or number)\n"
            "  presses it. When asked for a text, Enter keeps the text and a lone \"-\"\n"
            "  empties the box. Lines of the form script also work, for example\n"
            "  \"type txtName TEXT\", \"clear txtName\", \"leave txtName\". End of input\n"
            "  closes the form as Cancel.\n";
}

std::optional<std::string> read_answer(std::istream& in, std::ostream& screen,
                                       const std::string& prompt) {
  screen << prompt << std::flush;
  std::string line;
  if (!std::getline(in, line)) {
    screen << '\n';
    return std::nullopt;
  }
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

// Changes a box's text to `wanted` as a person would: backspace to the part that
// stays, then type the rest; a text replaced as a whole is selected and typed over.
void edit_text(FormModel& form, Control& box, const std::string& wanted) {
  const std::string old = box.text;
  std::size_t keep = 0;
  while (keep < old.size() && keep < wanted.size() && old[keep] == wanted[keep]) ++keep;
  // Back to the start of the letter the texts differ in.
  while (keep > 0 && keep < wanted.size() &&
         (static_cast<unsigned char>(wanted[keep]) & 0xC0u) == 0x80u)
    --keep;
  bool replace_all = keep == 0 && !old.empty() && !wanted.empty();
  if (!replace_all)
    for (std::size_t i = keep; i < old.size() && box.text.size() > keep; ++i)
      form.type_key(box, kBackspace);
  for (std::size_t i = keep; i < wanted.size();) {
    // One key a letter, as typed.
    const Utf8Character letter = decode_utf8(wanted, i);
    i += letter.bytes;
    const bool reached = form.type_key(box, static_cast<int>(letter.value), replace_all);
    if (reached) replace_all = false;
  }
}

bool take_focus(FormModel& form, Control& control, std::ostream& screen) {
  if (form.set_focus(control)) return true;
  screen << "The focus stays in " << form.focused()->display_name() << ".\n";
  return false;
}

void answer_text_box(FormModel& form, Control& box, const std::string& caption, std::istream& in,
                     std::ostream& screen) {
  if (!take_focus(form, box, screen)) return;
  const auto line =
      read_answer(in, screen, "  " + caption + " [" + box.text + "] (Enter keeps it): ");
  if (!line) {
    form.close_box();
    return;
  }
  if (line->empty()) return;
  edit_text(form, box, *line == "-" ? std::string() : *line);
}

void answer_combo_box(FormModel& form, Control& combo, const std::string& caption, std::istream& in,
                      std::ostream& screen) {
  if (!take_focus(form, combo, screen)) return;
  for (std::size_t i = 0; i < combo.items.size(); ++i)
    screen << "    " << std::setw(2) << i + 1 << "  " << combo.items[i] << '\n';
  const std::string prompt = "  " + caption + " [" + combo.text + "]: item number" +
                             (combo.editable ? " or a code" : "") + " (Enter keeps it): ";
  const auto line = read_answer(in, screen, prompt);
  if (!line) {
    form.close_box();
    return;
  }
  if (line->empty()) return;
  const bool digits = std::all_of(line->begin(), line->end(), [](char c) {
    return std::isdigit(static_cast<unsigned char>(c));
  });
  if (digits && line->size() < 4) {
    const int number = std::stoi(*line);
    if (number >= 1 && number <= static_cast<int>(combo.items.size())) {
      form.select_item(combo, number - 1);
      return;
    }
  }
  if (!combo.editable) {
    screen << "Pick an item from 1 to " << combo.items.size() << ".\n";
    return;
  }
  edit_text(form, combo, *line == "-" ? std::string() : *line);
}

}  // namespace

void print_terminal_form(const FormModel& form, std::ostream& screen) {
  const std::vector<Entry> entries = entries_of(form);
  screen << '\n' << "== " << (form.caption.empty() ? form.name() : form.caption) << " ==\n";
  std::string frame;
  std::string buttons;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const Control& control = *entries[i].control;
    const std::string number = std::to_string(i + 1);
    if (control.type == ControlType::CommandButton) {
      buttons += "  " + number + (entries[i].key ? std::string("/") + entries[i].key : "") + " [" +
                 entries[i].caption + "]";
      continue;
    }
    if (control.container != frame) {
      frame = control.container;
      if (!frame.empty()) {
        for (const auto& candidate : form.controls())
          if (candidate->name == frame && candidate->type == ControlType::Frame)
            screen << "  " << plain_caption(candidate->caption) << '\n';
      }
    }
    const char* indent = frame.empty() ? "" : "  ";
    screen << indent << std::setw(4) << number << "  ";
    switch (control.type) {
      case ControlType::CheckBox:
      case ControlType::OptionButton:
        screen << value_text(control) << ' ' << entries[i].caption;
        break;
      default:
        screen << entries[i].caption << (entries[i].caption.empty() ? "" : " ")
               << value_text(control);
        if (control.type == ControlType::ComboBox) {
          screen << "  (";
          for (std::size_t item = 0; item < control.items.size(); ++item)
            screen << (item ? ", " : "") << control.items[item];
          screen << ')';
        }
        break;
    }
    if (entries[i].caption != control.display_name()) screen << "   " << control.display_name();
    screen << '\n';
  }
  screen << buttons << '\n';
  if (form.focused() != nullptr) screen << "  focus: " << form.focused()->display_name() << '\n';
}

void run_terminal_form(FormModel& form, std::istream& in, std::ostream& screen) {
  bool show = true;
  while (form.visible()) {
    if (show) print_terminal_form(form, screen);
    show = true;
    const auto line = read_answer(in, screen, "Number, button letter, action or ? > ");
    if (!line) {
      form.close_box();
      break;
    }
    std::string answer = *line;
    while (!answer.empty() && answer.back() == ' ') answer.pop_back();
    while (!answer.empty() && answer.front() == ' ') answer.erase(answer.begin());
    if (answer.empty()) continue;
    if (answer == "?") {
      print_help(screen);
      show = false;
      continue;
    }

    const std::vector<Entry> entries = entries_of(form);
    const Entry* chosen = nullptr;
    const bool digits = std::all_of(answer.begin(), answer.end(), [](char c) {
      return std::isdigit(static_cast<unsigned char>(c));
    });
    if (digits && answer.size() < 4) {
      const std::size_t number = static_cast<std::size_t>(std::stoi(answer));
      if (number >= 1 && number <= entries.size()) chosen = &entries[number - 1];
    } else if (answer.size() == 1) {
      const char key = static_cast<char>(std::toupper(static_cast<unsigned char>(answer[0])));
      for (const Entry& entry : entries)
        if (entry.key == key) chosen = &entry;
    }

    if (chosen == nullptr) {
      const ScriptOutcome outcome = run_form_action(form, answer);
      if (outcome.kind != ScriptOutcome::Kind::Done) {
        screen << outcome.problem
               << (outcome.kind == ScriptOutcome::Kind::Invalid ? " (? for help)" : "") << ".\n";
      }
      continue;
    }

    Control& control = *chosen->control;
    switch (control.type) {
      case ControlType::TextBox:
        answer_text_box(form, control, chosen->caption, in, screen);
        break;
      case ControlType::ComboBox:
        answer_combo_box(form, control, chosen->caption, in, screen);
        break;
      case ControlType::CheckBox:
        if (take_focus(form, control, screen)) form.set_value(control, control.value == 1 ? 0 : 1);
        break;
      case ControlType::OptionButton:
        if (take_focus(form, control, screen)) form.set_value(control, 1);
        break;
      case ControlType::CommandButton:
        if (take_focus(form, control, screen)) form.press(control);
        break;
      default:
        break;
    }
  }
}

}  // namespace zorvat::cli
