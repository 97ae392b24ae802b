// The QuickBooks company `zorvat export QB2000 --qb-company FILE` exports to: a
// company simulator loaded from its JSON description, reached through qbXML
// documents as QuickBooks itself is reached. With a log path, every request document
// sent is written to that file as it goes. Builds without qbXML (Windows, where its XML
// library is not available header-only) call the simulator directly and have no log.
#pragma once

#include <fstream>
#include <optional>
#include <string>

#include "zorvat/quickbooks/simulator.h"
#if ZORVAT_CLI_QBXML
#include "zorvat/quickbooks/qbxml_session.h"
#endif

namespace zorvat::cli {

class SimulatedQuickBooks {
 public:
  // Loads the company file and opens the log. Raises zorvat::Error (from the company
  // reader) when the company cannot be used; throws std::runtime_error when the log
  // cannot be written.
  SimulatedQuickBooks(const std::string& company_path, const std::optional<std::string>& log_path);
  SimulatedQuickBooks(const SimulatedQuickBooks&) = delete;
  SimulatedQuickBooks& operator=(const SimulatedQuickBooks&) = delete;

  quickbooks::SessionManagerFactory& sessions() { return sessions_; }

 private:
  void log(std::string_view request_xml);

  quickbooks::CompanySimulator simulator_;
  std::ofstream log_;
#if ZORVAT_CLI_QBXML
  quickbooks::SimulatorQbxmlSessionFactory sessions_;
#else
  quickbooks::SimulatorSessionFactory sessions_;
#endif
};

}  // namespace zorvat::cli
