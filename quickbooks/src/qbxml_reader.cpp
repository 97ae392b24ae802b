// qbXML readers. The document is first checked as text (UTF-8, allowed characters,
// references), then parsed, then read element by element in the schema's order;
// every refusal names the element path where it happened.
#include <algorithm>
#include <charconv>
#include <pugixml.hpp>
#include <sstream>

#include "qbxml_names.h"
#include "xml_text.h"
#include "zorvat/error.h"
#include "zorvat/quickbooks/qbxml.h"
#include "zorvat/quickbooks/schema.h"
#include "zorvat/quickbooks/values.h"
#include "zorvat/text.h"

namespace zorvat::quickbooks {
namespace {

constexpr std::string_view kSource = "zorvat.QuickBooksQbxml";

constexpr unsigned kParseOptions = pugi::parse_default | pugi::parse_declaration | pugi::parse_pi |
                                   pugi::parse_comments | pugi::parse_doctype |
                                   pugi::parse_ws_pcdata_single;

bool is_blank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::optional<std::int32_t> whole_number(std::string_view text) {
  std::int32_t value = 0;
  if (text.empty() || text.front() == '+') return std::nullopt;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || stop != text.data() + text.size()) return std::nullopt;
  return value;
}

class Reader {
 public:
  explicit Reader(std::string_view kind) : kind_(kind) {}

  [[noreturn]] void fail(std::string_view place, std::string_view problem) const {
    std::string message = "qbXML " + std::string(kind_);
    if (!place.empty()) message += ": " + std::string(place);
    message += ": " + std::string(problem);
    raise(kQbxmlParseError, kSource, message);
  }

  // Parses `xml` into `document` and returns its QBXML element. The qbxml version
  // instruction, when there is one, is read into `version`.
  pugi::xml_node parse(pugi::xml_document& document, std::string_view xml,
                       std::optional<std::pair<std::int32_t, std::int32_t>>& version) {
    // A document in another encoding pugixml reads (UTF-16 or UTF-32, told by the
    // byte-order mark or the layout of "<?", or Latin-1 named by the declaration) is
    // read as pugixml reads it and checked as its UTF-8 text.
    std::string converted;
    {
      pugi::xml_document probe;
      const pugi::xml_parse_result probed =
          probe.load_buffer(xml.data(), xml.size(), kParseOptions, pugi::encoding_auto);
      if (probed.encoding != pugi::encoding_utf8) {
        if (!probed) fail("", std::string("in its encoding: ") + probed.description());
        std::ostringstream text;
        probe.save(text, "", pugi::format_raw, pugi::encoding_utf8);
        converted = text.str();
        xml = converted;
        encoding_ = probed.encoding;
      }
    }
    const std::string lexical = xml_lexical_problem(xml);
    if (!lexical.empty()) fail("", lexical);
    const pugi::xml_parse_result result =
        document.load_buffer(xml.data(), xml.size(), kParseOptions, pugi::encoding_utf8);
    if (!result) {
      fail("", "byte " + std::to_string(result.offset) + ": " + result.description());
    }
    pugi::xml_node root;
    bool first = true;
    for (const pugi::xml_node node : document.children()) {
      const bool was_first = std::exchange(first, false);
      switch (node.type()) {
        case pugi::node_declaration:
          if (!was_first) fail("", "the XML declaration is not at the start");
          read_declaration(node);
          break;
        case pugi::node_pi:
          if (std::string_view(node.name()) != "qbxml") {
            fail("", "unknown processing instruction \"" + std::string(node.name()) + "\"");
          }
          if (version) fail("", "a second qbxml version");
          if (root) fail("", "the qbxml version comes after the document element");
          version = read_version(node.value());
          break;
        case pugi::node_comment:
          break;
        case pugi::node_element:
          if (root) fail("", "a second document element <" + std::string(node.name()) + ">");
          if (std::string_view(node.name()) != "QBXML") {
            fail("", "the document element is <" + std::string(node.name()) + ">, not <QBXML>");
          }
          root = node;
          break;
        case pugi::node_doctype:
          fail("", "a document type declaration is not allowed");
        default:
          if (!is_blank(node.value())) fail("", "text outside the document element");
      }
    }
    if (!root) fail("", "no <QBXML> element");
    attributes(root, "QBXML", {});
    return root;
  }

  // The child elements of `parent`; comments are skipped, anything else but blank
  // text between them refused.
  std::vector<pugi::xml_node> elements(pugi::xml_node parent, std::string_view place) const {
    std::vector<pugi::xml_node> found;
    for (const pugi::xml_node node : parent.children()) {
      switch (node.type()) {
        case pugi::node_element:
          found.push_back(node);
          break;
        case pugi::node_comment:
          break;
        case pugi::node_pcdata:
          if (!is_blank(node.value()))
            fail(place, "unexpected text \"" + std::string(node.value()) + "\"");
          break;
        default:
          fail(place, "unexpected content (only elements belong here)");
      }
    }
    return found;
  }

  // The text of an element that holds nothing else (and no attributes).
  std::string text(pugi::xml_node element, std::string_view place) const {
    attributes(element, place, {});
    std::string value;
    for (const pugi::xml_node node : element.children()) {
      if (node.type() == pugi::node_pcdata) {
        value += node.value();
      } else if (node.type() != pugi::node_comment) {
        fail(place, "holds more than text");
      }
    }
    return value;
  }

  // Refuses attributes not in `allowed`, and any attribute given twice.
  void attributes(pugi::xml_node element, std::string_view place,
                  std::initializer_list<std::string_view> allowed) const {
    for (const pugi::xml_attribute attribute : element.attributes()) {
      const std::string_view name = attribute.name();
      if (std::find(allowed.begin(), allowed.end(), name) == allowed.end()) {
        fail(place, "unexpected attribute " + std::string(name));
      }
      for (pugi::xml_attribute other = attribute.next_attribute(); other;
           other = other.next_attribute()) {
        if (name == other.name()) fail(place, "attribute " + std::string(name) + " given twice");
      }
    }
  }

  std::string required_attribute(pugi::xml_node element, std::string_view place,
                                 const char* name) const {
    const pugi::xml_attribute attribute = element.attribute(name);
    if (!attribute) fail(place, "attribute " + std::string(name) + " is missing");
    return attribute.value();
  }

  // A request's or response's requestID: its position in the message set, from 1.
  void check_request_id(pugi::xml_node element, std::string_view place, std::size_t index) const {
    const std::string id = required_attribute(element, place, "requestID");
    if (id != std::to_string(index + 1)) {
      fail(place, "requestID \"" + id + "\" where " + std::to_string(index + 1) + " belongs");
    }
  }

  std::int32_t number(std::string_view text, std::string_view place) const {
    const auto value = whole_number(text);
    if (!value) fail(place, "\"" + std::string(text) + "\" is not a whole number");
    return *value;
  }

 private:
  void read_declaration(pugi::xml_node declaration) const {
    for (const pugi::xml_attribute attribute : declaration.attributes()) {
      const std::string_view name = attribute.name();
      const std::string_view value = attribute.value();
      if (name == "version" && value == "1.0") continue;
      if (name == "encoding" && names_read_encoding(value)) continue;
      if (name == "standalone" && (value == "yes" || value == "no")) continue;
      fail("", "XML declaration with " + std::string(name) + "=\"" + std::string(value) + "\"");
    }
  }

  // `version="M.m"`
  std::pair<std::int32_t, std::int32_t> read_version(std::string_view text) const {
    const auto refuse = [&] {
      fail("", "qbxml instruction \"" + std::string(text) + "\" names no version M.m");
    };
    const std::size_t open = text.find('"');
    const std::size_t close = text.rfind('"');
    if (!text.starts_with("version") || open == std::string_view::npos || close <= open) refuse();
    std::string_view between = text.substr(7, open - 7);
    if (between.find_first_not_of(" \t\r\n=") != std::string_view::npos ||
        std::count(between.begin(), between.end(), '=') != 1 || !is_blank(text.substr(close + 1))) {
      refuse();
    }
    const std::string_view pair = text.substr(open + 1, close - open - 1);
    const std::size_t dot = pair.find('.');
    if (dot == std::string_view::npos) refuse();
    const auto major_version = whole_number(pair.substr(0, dot));
    const auto minor_version = whole_number(pair.substr(dot + 1));
    if (!major_version || !minor_version || *major_version < 0 || *minor_version < 0) refuse();
    return {*major_version, *minor_version};
  }

  // Whether `name` names the encoding the document was read in.
  bool names_read_encoding(std::string_view name) const {
    switch (encoding_) {
      case pugi::encoding_utf16_le:
      case pugi::encoding_utf16_be:
        return iequals(name, "utf-16") || iequals(name, "utf-16le") || iequals(name, "utf-16be");
      case pugi::encoding_utf32_le:
      case pugi::encoding_utf32_be:
        return iequals(name, "utf-32") || iequals(name, "utf-32le") || iequals(name, "utf-32be");
      case pugi::encoding_latin1:
        return iequals(name, "iso-8859-1") || iequals(name, "latin1") || iequals(name, "latin-1");
      default:
        return iequals(name, "utf-8");
    }
  }

  std::string_view kind_;
  pugi::xml_encoding encoding_ = pugi::encoding_utf8;
};

// The child elements of one element, taken in the schema's order.
class Sequence {
 public:
  Sequence(const Reader& reader, pugi::xml_node parent, std::string place)
      : reader_(reader), nodes_(reader.elements(parent, place)), place_(std::move(place)) {}

  const std::string& place() const { return place_; }
  std::string place_of(std::string_view name) const { return place_ + "/" + std::string(name); }

  pugi::xml_node optional(std::string_view name) {
    if (next_ < nodes_.size() && name == nodes_[next_].name()) return nodes_[next_++];
    return {};
  }
  pugi::xml_node required(std::string_view name) {
    const pugi::xml_node node = optional(name);
    if (node) return node;
    if (next_ < nodes_.size()) {
      reader_.fail(place_,
                   "expected <" + std::string(name) + ">, found <" + nodes_[next_].name() + ">");
    }
    reader_.fail(place_, "<" + std::string(name) + "> is missing");
  }
  std::string required_text(std::string_view name) {
    return reader_.text(required(name), place_of(name));
  }
  // <Name><FullName>text</FullName></Name>
  std::string required_reference(std::string_view name) {
    const pugi::xml_node node = required(name);
    reader_.attributes(node, place_of(name), {});
    Sequence inside(reader_, node, place_of(name));
    std::string full_name = inside.required_text("FullName");
    inside.finish();
    return full_name;
  }
  void finish() const {
    if (next_ < nodes_.size())
      reader_.fail(place_, "unexpected <" + std::string(nodes_[next_].name()) + ">");
  }

 private:
  const Reader& reader_;
  std::vector<pugi::xml_node> nodes_;
  std::string place_;
  std::size_t next_ = 0;
};

Request read_payroll_item_wage_query(Sequence& body, const Reader& reader, bool) {
  PayrollItemWageQuery query;
  if (const pugi::xml_node max = body.optional("MaxReturned")) {
    const std::string place = body.place_of("MaxReturned");
    query.max_returned = reader.number(reader.text(max, place), place);
  }
  return query;
}

Request read_employee_query(Sequence&, const Reader&, bool) {
  return EmployeeQuery{};
}

Request read_employee_add(Sequence& body, const Reader& reader, bool) {
  const pugi::xml_node node = body.required("EmployeeAdd");
  reader.attributes(node, body.place_of("EmployeeAdd"), {});
  Sequence fields(reader, node, body.place_of("EmployeeAdd"));
  EmployeeAdd add;
  for (auto [name, part] :
       {std::pair{"FirstName", &add.first_name}, std::pair{"MiddleName", &add.middle_name},
        std::pair{"LastName", &add.last_name}}) {
    if (const pugi::xml_node found = fields.optional(name))
      *part = reader.text(found, fields.place_of(name));
  }
  fields.finish();
  return add;
}

// Whether the entry is billable: IsBillable below qbXML 6.0, BillableStatus from 6.0
// on; each is optional, and the other version's element is refused.
Request read_time_tracking_add(Sequence& body, const Reader& reader, bool billable_status) {
  const pugi::xml_node node = body.required("TimeTrackingAdd");
  reader.attributes(node, body.place_of("TimeTrackingAdd"), {});
  Sequence fields(reader, node, body.place_of("TimeTrackingAdd"));
  TimeTrackingAdd add;
  const std::string date = fields.required_text("TxnDate");
  const std::optional<Date> txn_date = parse_iso_date(date);
  if (!txn_date)
    reader.fail(fields.place_of("TxnDate"), "\"" + date + "\" is not a date YYYY-MM-DD");
  add.txn_date = *txn_date;
  add.entity_full_name = fields.required_reference("EntityRef");
  const std::string duration = fields.required_text("Duration");
  const std::optional<Duration> parsed = parse_duration_text(duration);
  if (!parsed)
    reader.fail(fields.place_of("Duration"), "\"" + duration + "\" is not a duration PTnHnMnS");
  add.duration = *parsed;
  add.payroll_item_wage_full_name = fields.required_reference("PayrollItemWageRef");
  add.notes = fields.required_text("Notes");
  const std::string_view element = billable_status ? "BillableStatus" : "IsBillable";
  if (const pugi::xml_node found = fields.optional(element)) {
    const std::string place = fields.place_of(element);
    const std::string billable = reader.text(found, place);
    if (billable_status) {
      if (billable == "Billable" || billable == "HasBeenBilled") {
        add.is_billable = true;
      } else if (billable != "NotBillable") {
        reader.fail(place, "\"" + billable + "\" is not Billable, NotBillable or HasBeenBilled");
      }
    } else if (billable == "true" || billable == "1") {
      add.is_billable = true;
    } else if (billable != "false" && billable != "0") {
      reader.fail(place, "\"" + billable + "\" is not true or false");
    }
  }
  fields.finish();
  return add;
}

using RequestBodyReader = Request (*)(Sequence&, const Reader&, bool);
constexpr RequestBodyReader kRequestBodyReaders[] = {
    read_payroll_item_wage_query, read_employee_query, read_employee_add, read_time_tracking_add};

// The index into kQbxmlNames of the element named `name`, by request or response name.
std::optional<std::size_t> kind_named(std::string_view name, std::string_view QbxmlNames::*field) {
  for (std::size_t kind = 0; kind < std::size(kQbxmlNames); ++kind) {
    if (kQbxmlNames[kind].*field == name) return kind;
  }
  return std::nullopt;
}

std::string indexed_place(std::string_view parent, std::string_view name, std::size_t index) {
  return std::string(parent) + "/" + std::string(name) + "[" + std::to_string(index + 1) + "]";
}

// The returned objects of a response, then the ErrorRecovery that QuickBooks may add
// after them (its content is not read).
std::vector<ReturnedObject> read_returned(const Reader& reader, pugi::xml_node response,
                                          const std::string& place, const QbxmlNames& names) {
  std::vector<ReturnedObject> objects;
  const std::vector<pugi::xml_node> children = reader.elements(response, place);
  bool recovery = false;
  for (std::size_t index = 0; index < children.size(); ++index) {
    const pugi::xml_node returned = children[index];
    const std::string returned_place = indexed_place(place, returned.name(), index);
    if (recovery) reader.fail(returned_place, "nothing follows <ErrorRecovery>");
    if (std::string_view(returned.name()) == "ErrorRecovery") {
      recovery = true;
      continue;
    }
    if (names.returned != returned.name()) {
      reader.fail(returned_place, "expected <" + std::string(names.returned) + ">");
    }
    reader.attributes(returned, returned_place, {});
    // QuickBooks returns more fields than are read: only the Name is looked for.
    std::optional<std::string> name;
    for (const pugi::xml_node field : reader.elements(returned, returned_place)) {
      if (std::string_view(field.name()) != "Name") continue;
      if (name) reader.fail(returned_place, "a second <Name>");
      name = reader.text(field, returned_place + "/Name");
    }
    if (names.named && !name) reader.fail(returned_place, "<Name> is missing");
    if (!names.named && name) reader.fail(returned_place, "a time entry has no <Name>");
    objects.push_back(ReturnedObject{name.value_or("")});
  }
  return objects;
}

struct ReadResponses {
  ResponseSet responses;
  std::vector<std::size_t> kinds;  // the request kind each response answers
};

ReadResponses read_responses(std::string_view xml) {
  Reader reader("response");
  pugi::xml_document document;
  std::optional<std::pair<std::int32_t, std::int32_t>> version;
  const pugi::xml_node root = reader.parse(document, xml, version);
  Sequence top(reader, root, "QBXML");
  const pugi::xml_node messages = top.required("QBXMLMsgsRs");
  top.finish();
  const std::string place = "QBXML/QBXMLMsgsRs";
  // QuickBooks adds these when the set was sent for error recovery; neither is read.
  reader.attributes(messages, place, {"newMessageSetID", "messageSetStatusCode"});
  if (const pugi::xml_attribute status = messages.attribute("messageSetStatusCode"))
    reader.number(status.value(), place + " messageSetStatusCode");

  ReadResponses read;
  const std::vector<pugi::xml_node> children = reader.elements(messages, place);
  for (std::size_t index = 0; index < children.size(); ++index) {
    const pugi::xml_node element = children[index];
    const std::string element_place = indexed_place(place, element.name(), index);
    const std::optional<std::size_t> kind = kind_named(element.name(), &QbxmlNames::response);
    if (!kind) reader.fail(element_place, "not a response this session sends requests for");
    // Every attribute the schema gives a response; requestID and statusMessage are
    // optional, and a query's retCount and iterator attributes are not read.
    reader.attributes(element, element_place,
                      {"requestID", "statusCode", "statusSeverity", "statusMessage", "retCount",
                       "iteratorRemainingCount", "iteratorID"});
    if (element.attribute("requestID")) reader.check_request_id(element, element_place, index);
    Response response;
    response.status_code =
        reader.number(reader.required_attribute(element, element_place, "statusCode"),
                      element_place + " statusCode");
    response.status_severity = reader.required_attribute(element, element_place, "statusSeverity");
    if (response.status_severity != "Info" && response.status_severity != "Warn" &&
        response.status_severity != "Error") {
      reader.fail(element_place,
                  "statusSeverity \"" + response.status_severity + "\" is not Info, Warn or Error");
    }
    response.status_message = element.attribute("statusMessage").value();
    std::vector<ReturnedObject> objects =
        read_returned(reader, element, element_place, kQbxmlNames[*kind]);
    if (!objects.empty()) response.detail = std::move(objects);
    read.responses.responses.push_back(std::move(response));
    read.kinds.push_back(*kind);
  }
  return read;
}

}  // namespace

RequestSet read_qbxml_request(std::string_view xml) {
  Reader reader("request");
  pugi::xml_document document;
  std::optional<std::pair<std::int32_t, std::int32_t>> version;
  const pugi::xml_node root = reader.parse(document, xml, version);
  if (!version) reader.fail("", "the qbxml version instruction is missing");
  RequestSet request_set;
  request_set.major_version = version->first;
  request_set.minor_version = version->second;

  Sequence top(reader, root, "QBXML");
  const pugi::xml_node messages = top.required("QBXMLMsgsRq");
  top.finish();
  const std::string place = "QBXML/QBXMLMsgsRq";
  reader.attributes(messages, place, {"onError"});
  const std::string on_error = reader.required_attribute(messages, place, "onError");
  if (on_error == on_error_text(OnError::Stop)) {
    request_set.on_error = OnError::Stop;
  } else if (on_error == on_error_text(OnError::Continue)) {
    request_set.on_error = OnError::Continue;
  } else if (on_error == on_error_text(OnError::Rollback)) {
    request_set.on_error = OnError::Rollback;
  } else {
    reader.fail(place, "onError \"" + on_error +
                           "\" is not stopOnError, continueOnError or rollbackOnError");
  }

  const std::vector<pugi::xml_node> children = reader.elements(messages, place);
  for (std::size_t index = 0; index < children.size(); ++index) {
    const pugi::xml_node element = children[index];
    const std::string element_place = indexed_place(place, element.name(), index);
    const std::optional<std::size_t> kind = kind_named(element.name(), &QbxmlNames::request);
    if (!kind) reader.fail(element_place, "not a request this session sends");
    reader.attributes(element, element_place, {"requestID"});
    reader.check_request_id(element, element_place, index);
    Sequence body(reader, element, element_place);
    request_set.requests.push_back(kRequestBodyReaders[*kind](
        body, reader, uses_billable_status(request_set.major_version, request_set.minor_version)));
    body.finish();
    // The schema's maximum lengths.
    if (const std::optional<FieldLimitProblem> problem =
            field_limit_problem(request_set.requests.back()))
      reader.fail(element_place, problem->description());
  }
  return request_set;
}

ResponseSet read_qbxml_response(std::string_view xml) {
  return read_responses(xml).responses;
}

ResponseSet read_qbxml_response(std::string_view xml, const RequestSet& answered) {
  ReadResponses read = read_responses(xml);
  if (read.kinds.size() > answered.requests.size()) {
    raise(kQbxmlParseError, kSource,
          "qbXML response: " + std::to_string(read.kinds.size()) + " responses to " +
              std::to_string(answered.requests.size()) + " requests");
  }
  for (std::size_t index = 0; index < read.kinds.size(); ++index) {
    if (read.kinds[index] != answered.requests[index].index()) {
      raise(kQbxmlParseError, kSource,
            "qbXML response: response " + std::to_string(index + 1) + " is <" +
                std::string(kQbxmlNames[read.kinds[index]].response) + ">, not <" +
                std::string(qbxml_names(answered.requests[index]).response) +
                "> as its request needs");
    }
  }
  return std::move(read.responses);
}

}  // namespace zorvat::quickbooks
