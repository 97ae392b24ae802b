#include "zorvat/quickbooks/back_ends.h"

namespace zorvat::quickbooks {

std::string session_back_end_names() {
  std::string names;
  for (const SessionBackEnd& back_end : kSessionBackEnds) {
    if (!names.empty()) names += ", ";
    names += back_end.prog_id;
  }
  return names;
}

}  // namespace zorvat::quickbooks
