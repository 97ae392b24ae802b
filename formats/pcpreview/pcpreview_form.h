// frmPCPreview: the setup form of PCPreview. Client number, the regular and overtime
// pay codes, the sequence, and the four miscellaneous pay codes with their deduction
// boxes: thirteen settings fields. Number boxes take digits only; pay codes are typed
// in upper case.
#pragma once

#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class PCPreviewForm final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1097;

  PCPreviewForm();

 protected:
  void prepare(std::string_view title) override;
};

// The shared instance.
PCPreviewForm& frmPCPreview();

}  // namespace zorvat::formats
