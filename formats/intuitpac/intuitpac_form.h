// frmIntuitPAC: the setup form of IntuitPAC. The company name code, three pay codes,
// the four miscellaneous pay codes with their "export as deduction" boxes: twelve
// settings fields. The edition (the class's Title) names the form, decides whether
// the short layout's single pay-code box is shown, and is the one the company code
// is checked against when the user leaves its box.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class IntuitPAC;

class IntuitPACForm final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1099;

  IntuitPACForm();
  ~IntuitPACForm() override;

 protected:
  void prepare(std::string_view title) override;
  std::string write_back() const override;

 private:
  void txtCompanyName_Validate(bool& cancel);

  // The form's own object of the edition, for IsJr and the company-code check.
  std::unique_ptr<IntuitPAC> checker_;
  bool jr_ = false;
};

// The shared instance.
IntuitPACForm& frmIntuitPAC();

}  // namespace zorvat::formats
