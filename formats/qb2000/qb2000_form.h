// frmQB2000: the setup form of the QuickBooks export. The company file and the seven
// QuickBooks payroll items, in the control array txtPayCode by field number: eight
// settings fields. "Select..." (cmdButton(3)) picks the company file.
#pragma once

#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class QB2000Form final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1089;
  // The folder box 0 starts from when it is empty.
  static constexpr std::string_view kDefaultFolder = "C:/Program Files/Intuit/";

  QB2000Form();

  void cmdButton_Click(int index) override;

 protected:
  void prepare(std::string_view title) override;
  void seeded() override;
};

// The shared instance.
QB2000Form& frmQB2000();

}  // namespace zorvat::formats
