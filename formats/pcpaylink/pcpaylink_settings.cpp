// PCPayLink's settings string, field by field; the error of a field is 2001 plus its
// position, and the earning codes are not checked.
#include "pcpaylink/pcpaylink.h"
#include "pcpaylink/pcpaylink_form.h"

namespace zorvat::formats {

ClassDescription PCPayLink::describe() {
  using enum PCPayLinkErrorsEnum;
  constexpr const char* kEarningCode = "PayLink earning code (the form lists the usual ones)";
  return describe_settings(
      PCPayLinkForm(), "the \"|\"-tagged PayLink file: header, detail and trailer records",
      {
          {"Office Number", "0 to 1295", ZORVAT_SETTING_GUARD(errOfficeNumber), true},
          {"Client ID", "at most 4 characters", ZORVAT_SETTING_GUARD(errClientID)},
          {"Site Number", "0 to 9", ZORVAT_SETTING_GUARD(errSiteNumber), true},
          {"Sequence Number", "0 to 46655; advanced by each export",
           ZORVAT_SETTING_GUARD(errSeqNumber), true},
          {"Vacation Pay Code", kEarningCode},
          {"Holiday Pay Code", kEarningCode},
          {"Sick Pay Code", kEarningCode},
          {"Other Pay Code", kEarningCode},
      });
}

}  // namespace zorvat::formats
