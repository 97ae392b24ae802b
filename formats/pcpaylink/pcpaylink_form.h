// frmPCPayLink: the setup form of PCPayLink. Office, client, site and sequence
// numbers, and the PayLink earning codes of the four miscellaneous categories, picked
// from their lists: eight settings fields. The edition (the class's Title) names the
// form. The office and sequence boxes warn at once when their number is out of range.
#pragma once

#include <string_view>

#include "zorvat/forms.h"

namespace zorvat::formats {

class PCPayLinkForm final : public FormModel {
 public:
  static constexpr unsigned long kHelpContext = 1096;

  PCPayLinkForm();

 protected:
  void prepare(std::string_view title) override;

 private:
  void check_range(const char* box, double highest, const char* what);
};

// The shared instance.
PCPayLinkForm& frmPCPayLink();

}  // namespace zorvat::formats
