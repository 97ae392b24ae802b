// The QuickBooks company `zorvat export QB2000 --qb-company FILE` exports to: a
// company simulator loaded from its JSON description, reached through qbXML
// documents as QuickBooks itself is reached. With a log path, every request document
// sent is written to that file as it goes.
#pragma once

#include <fstream>
#include <optional>
#include <string>

#include "zorvat/quickbooks/qbxml_session.h"
#include "zorvat/quickbooks/simulator.h"

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
  quickbooks::SimulatorQbxmlSessionFactory sessions_;
};

}  // namespace zorvat::cli
