#include "simulated_quickbooks.h"

#include <stdexcept>

#include "zorvat/quickbooks/company.h"

namespace zorvat::cli {

SimulatedQuickBooks::SimulatedQuickBooks(const std::string& company_path,
                                         const std::optional<std::string>& log_path)
    : simulator_(quickbooks::load_company_file(company_path)),
      sessions_(simulator_, [this](std::string_view request_xml) { log(request_xml); }) {
  if (!log_path) return;
  log_.open(*log_path, std::ios::binary | std::ios::trunc);
  if (!log_) throw std::runtime_error("--qb-log: cannot write \"" + *log_path + "\"");
}

void SimulatedQuickBooks::log(std::string_view request_xml) {
  if (!log_.is_open()) return;
  log_ << request_xml;
  if (!request_xml.empty() && request_xml.back() != '\n') log_ << '\n';
  log_.flush();
}

}  // namespace zorvat::cli
