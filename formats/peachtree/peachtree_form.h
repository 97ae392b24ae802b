// frmPeachtree: the setup form of Peachtree. A pay level and a pay item code for each
// of the seven hour types, the titles option and the batch sequence: sixteen settings
// fields. No key is filtered.
#pragma once

#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class PeachtreeForm final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1094;

  PeachtreeForm();

 protected:
  void prepare(std::string_view title) override;
};

// The shared instance.
PeachtreeForm& frmPeachtree();

}  // namespace zorvat::formats
