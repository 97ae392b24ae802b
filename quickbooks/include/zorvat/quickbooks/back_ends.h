// The session back ends the QuickBooks export tries on Windows, in the order it tries
// them: the first whose COM object can be created serves the whole export. The COM
// server creates them from this list, and the class's description names them from it;
// nothing else enumerates them.
//
// First the SDK's session managers of the qbXML 1.x era (CreateMsgSetRequest with the
// version alone), then the newer generations, newest first, whose CreateMsgSetRequest
// takes a country code first and which build message sets up to their own version
// only: QBFCn builds up to qbXML n.0.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "zorvat/quickbooks/versions.h"

namespace zorvat::quickbooks {

enum class BackEndKind {
  // A session manager called in the shapes of the qbXML 1.x era, as it is listed.
  EarlyQbfc,
  // A newer session manager, called in the shapes its own type information gives;
  // it creates message sets up to `newest_built`.
  NewerQbfc,
  // The qbXML request processor every QuickBooks Desktop installs: it carries the
  // export's own qbXML documents, written up to the newest version the export writes.
  RequestProcessor,
};

struct SessionBackEnd {
  std::string_view prog_id;
  BackEndKind kind;
  QbxmlVersionNumber newest_built;  // NewerQbfc and RequestProcessor
};

inline constexpr std::array<SessionBackEnd, 17> kSessionBackEnds{{
    {"QBFC2.QBSessionManager", BackEndKind::EarlyQbfc, {}},
    {"QBFC1.QBSessionManager", BackEndKind::EarlyQbfc, {}},
    {"QBFC16.QBSessionManager", BackEndKind::NewerQbfc, {16, 0}},
    {"QBFC15.QBSessionManager", BackEndKind::NewerQbfc, {15, 0}},
    {"QBFC14.QBSessionManager", BackEndKind::NewerQbfc, {14, 0}},
    {"QBFC13.QBSessionManager", BackEndKind::NewerQbfc, {13, 0}},
    {"QBFC12.QBSessionManager", BackEndKind::NewerQbfc, {12, 0}},
    {"QBFC11.QBSessionManager", BackEndKind::NewerQbfc, {11, 0}},
    {"QBFC10.QBSessionManager", BackEndKind::NewerQbfc, {10, 0}},
    {"QBFC9.QBSessionManager", BackEndKind::NewerQbfc, {9, 0}},
    {"QBFC8.QBSessionManager", BackEndKind::NewerQbfc, {8, 0}},
    {"QBFC7.QBSessionManager", BackEndKind::NewerQbfc, {7, 0}},
    {"QBFC6.QBSessionManager", BackEndKind::NewerQbfc, {6, 0}},
    {"QBFC5.QBSessionManager", BackEndKind::NewerQbfc, {5, 0}},
    {"QBFC4.QBSessionManager", BackEndKind::NewerQbfc, {4, 0}},
    {"QBFC3.QBSessionManager", BackEndKind::NewerQbfc, {3, 0}},
    {"QBXMLRP2.RequestProcessor", BackEndKind::RequestProcessor, kNewestVersionWritten},
}};

// The ProgIDs in order, joined with ", ": what the class's description names.
std::string session_back_end_names();

}  // namespace zorvat::quickbooks
