// frmPrimePay: the setup form of PrimePay. The batch sequence number and the six pay
// codes: seven settings fields. The batch box takes digits only and warns on every
// change that leaves it out of range; a text that is not a number is taken out.
#pragma once

#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class PrimePayForm final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1098;

  PrimePayForm();

 protected:
  void prepare(std::string_view title) override;

 private:
  void txtBatchSequence_Change();
};

// The shared instance.
PrimePayForm& frmPrimePay();

}  // namespace zorvat::formats
