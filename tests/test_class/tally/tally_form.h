// frmTally: the setup form of Tally, one check box for the title line.
#pragma once

#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class TallyForm final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1199;

  TallyForm();

 protected:
  void prepare(std::string_view title) override;
};

TallyForm& frmTally();

}  // namespace zorvat::formats
