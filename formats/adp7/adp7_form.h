// frmADP7: the setup form of ADP7. Company code, batch sequence and pay number, the
// five pay codes with their code names, and the output format (EPIP or CSV): the
// fourteen settings fields.
#pragma once

#include <string>
#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class ADP7Form final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1095;

  ADP7Form();

 protected:
  void prepare(std::string_view title) override;
  void fill(const SettingsFields& fields) override;
  std::string write_back() const override;
};

// The shared instance.
ADP7Form& frmADP7();

}  // namespace zorvat::formats
