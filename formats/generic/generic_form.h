// frmGeneric: the setup form of Generic. Five output options, the line terminator and
// the field separator, twelve settings fields in all; no checks of its own.
#pragma once

#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class GenericForm final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1093;

  GenericForm();

 protected:
  void prepare(std::string_view title) override;
};

// The shared instance.
GenericForm& frmGeneric();

}  // namespace zorvat::formats
