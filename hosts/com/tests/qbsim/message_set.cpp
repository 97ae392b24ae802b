#include "message_set.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "fields.h"
#include "zorvat/quickbooks/schema.h"
#include "zorvat/quickbooks/values.h"

namespace zorvat::qbsim {
namespace {

using nlohmann::json;
using namespace quickbooks;

// {B6DCBC45-F028-4DDD-9B80-0C5066671340}: asks a message set whether it is one of ours.
constexpr IID kMessageSetIid = {
    0xb6dcbc45, 0xf028, 0x4ddd, {0x9b, 0x80, 0x0c, 0x50, 0x66, 0x67, 0x13, 0x40}};

std::string recorded_date(double serial) {
  const Date date{serial};
  std::string text = txn_date_text(date);
  if (const int seconds = date.seconds_of_day(); seconds != 0) {
    char time[16];
    std::snprintf(time, sizeof time, "T%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60,
                  seconds % 60);
    text += time;
  }
  return text;
}

// Where the fields of request `index` of a set report.
class RequestFields {
 public:
  RequestFields(std::shared_ptr<MessageSet> set, std::size_t index)
      : set_(std::move(set)), index_(index) {}

  // A sink that records `path` with the value as shown by `shown` and applies it.
  template <class Typed, class Apply>
  FieldSink sink(std::string path, Apply apply) const {
    return [set = set_, index = index_, path = std::move(path), apply](const json& value) {
      json shown = value;
      if (path == "TxnDate") shown = recorded_date(value.get<double>());
      set->record["requests"][index]["set"].push_back(json::array({path, shown}));
      apply(std::get<Typed>(set->requests.requests[index]), value);
    };
  }

 private:
  std::shared_ptr<MessageSet> set_;
  std::size_t index_;
};

class ListFilter final : public Automation<IListFilter> {
 public:
  explicit ListFilter(const RequestFields& fields)
      : max_returned_(make<IntField>(
            fields.sink<PayrollItemWageQuery>("ORListQuery.ListFilter.MaxReturned",
                                              [](PayrollItemWageQuery& query, const json& value) {
                                                query.max_returned = value.get<std::int32_t>();
                                              }))) {}
  HRESULT STDMETHODCALLTYPE get_MaxReturned(IQBIntType** max) override {
    hand_out(max, max_returned_);
    return S_OK;
  }

 private:
  ComPtr<IntField> max_returned_;
};

class ORListQuery final : public Automation<IORListQuery> {
 public:
  explicit ORListQuery(ComPtr<ListFilter> filter) : filter_(std::move(filter)) {}
  HRESULT STDMETHODCALLTYPE get_ListFilter(IListFilter** filter) override {
    hand_out(filter, filter_);
    return S_OK;
  }

 private:
  ComPtr<ListFilter> filter_;
};

class PayrollItemWageQueryRq final : public Automation<IPayrollItemWageQuery> {
 public:
  explicit PayrollItemWageQueryRq(const RequestFields& fields)
      : query_(make<ORListQuery>(make<ListFilter>(fields))) {}
  HRESULT STDMETHODCALLTYPE get_ORListQuery(IORListQuery** query) override {
    hand_out(query, query_);
    return S_OK;
  }

 private:
  ComPtr<ORListQuery> query_;
};

// An employee query sends no filter; its list filter sets nothing the export uses.
class EmployeeQueryRq final : public Automation<IEmployeeQuery> {
 public:
  EmployeeQueryRq() : query_(make<ORListQuery>(nullptr)) {}
  HRESULT STDMETHODCALLTYPE get_ORListQuery(IORListQuery** query) override {
    hand_out(query, query_);
    return S_OK;
  }

 private:
  ComPtr<ORListQuery> query_;
};

class EmployeeAddRq final : public Automation<IEmployeeAdd> {
 public:
  explicit EmployeeAddRq(const RequestFields& fields)
      : first_(make<StringField>("FirstName", kFirstNameLength,
                                 fields.sink<EmployeeAdd>("FirstName",
                                                          [](EmployeeAdd& add, const json& value) {
                                                            add.first_name =
                                                                value.get<std::string>();
                                                          }))),
        middle_(make<StringField>("MiddleName", kMiddleNameLength,
                                  fields.sink<EmployeeAdd>("MiddleName",
                                                           [](EmployeeAdd& add, const json& value) {
                                                             add.middle_name =
                                                                 value.get<std::string>();
                                                           }))),
        last_(make<StringField>(
            "LastName", kLastNameLength,
            fields.sink<EmployeeAdd>("LastName", [](EmployeeAdd& add, const json& value) {
              add.last_name = value.get<std::string>();
            }))) {}
  HRESULT STDMETHODCALLTYPE get_FirstName(IQBStringType** name) override {
    hand_out(name, first_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_MiddleName(IQBStringType** name) override {
    hand_out(name, middle_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_LastName(IQBStringType** name) override {
    hand_out(name, last_);
    return S_OK;
  }

 private:
  ComPtr<StringField> first_;
  ComPtr<StringField> middle_;
  ComPtr<StringField> last_;
};

// The interfaces of one generation's message set: the early generations' time
// interval takes (hour, minute, second), the newer ones' a sign as well.
struct EarlyShapes {
  using MessageSet = IMsgSetRequest;
  using TimeEntry = ITimeTrackingAdd;
  using Interval = IQBTimeIntervalType;
  using IntervalField = TimeIntervalField;
  static void apply_duration(TimeTrackingAdd& add, const json& value) {
    add.duration = {value.at(0).get<std::int32_t>(), value.at(1).get<std::int32_t>(),
                    value.at(2).get<std::int32_t>()};
  }
};

struct NewerShapes {
  using MessageSet = IMsgSetRequestN;
  using TimeEntry = ITimeTrackingAddN;
  using Interval = IQBTimeIntervalTypeN;
  using IntervalField = SignedTimeIntervalField;
  // The field takes counts without sign only, so the duration always reads.
  static void apply_duration(TimeTrackingAdd& add, const json& value) {
    add.duration = duration_of({value.at(0).get<std::int64_t>(), value.at(1).get<std::int64_t>(),
                                value.at(2).get<std::int64_t>(), value.at(3).get<bool>()})
                       .value_or(Duration{});
  }
};

template <class Shapes>
class TimeTrackingAddRq final : public Automation<typename Shapes::TimeEntry> {
 public:
  explicit TimeTrackingAddRq(const RequestFields& fields)
      : txn_date_(make<DateField>(fields.sink<TimeTrackingAdd>(
            "TxnDate", [](TimeTrackingAdd& add,
                          const json& value) { add.txn_date = Date{value.get<double>()}; }))),
        entity_(make<BaseRef>(make<StringField>(
            "EntityRef.FullName", kEntityFullNameLength,
            fields.sink<TimeTrackingAdd>("EntityRef.FullName",
                                         [](TimeTrackingAdd& add, const json& value) {
                                           add.entity_full_name = value.get<std::string>();
                                         })))),
        duration_(make<typename Shapes::IntervalField>(
            fields.sink<TimeTrackingAdd>("Duration", &Shapes::apply_duration))),
        item_(make<BaseRef>(make<StringField>(
            "PayrollItemWageRef.FullName", kPayrollItemFullNameLength,
            fields.sink<TimeTrackingAdd>("PayrollItemWageRef.FullName",
                                         [](TimeTrackingAdd& add, const json& value) {
                                           add.payroll_item_wage_full_name =
                                               value.get<std::string>();
                                         })))),
        notes_(make<StringField>(
            "Notes", kTimeTrackingNotesLength,
            fields.sink<TimeTrackingAdd>("Notes",
                                         [](TimeTrackingAdd& add, const json& value) {
                                           add.notes = value.get<std::string>();
                                         }))),
        is_billable_(make<BoolField>(fields.sink<TimeTrackingAdd>(
            "IsBillable",
            [](TimeTrackingAdd& add, const json& value) { add.is_billable = value.get<bool>(); }))),
        billable_status_(make<BillableStatusField>(fields.sink<TimeTrackingAdd>(
            "BillableStatus", [](TimeTrackingAdd& add, const json& value) {
              add.is_billable = value.get<int>() != bsNotBillable;
            }))) {}

  HRESULT STDMETHODCALLTYPE get_TxnDate(IQBDateType** date) override {
    hand_out(date, txn_date_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_EntityRef(IQBBaseRef** entity) override {
    hand_out(entity, entity_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Duration(typename Shapes::Interval** duration) override {
    hand_out(duration, duration_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_PayrollItemWageRef(IQBBaseRef** item) override {
    hand_out(item, item_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Notes(IQBStringType** notes) override {
    hand_out(notes, notes_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_IsBillable(IQBBoolType** billable) override {
    hand_out(billable, is_billable_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_BillableStatus(IQBENBillableStatusType** status) override {
    hand_out(status, billable_status_);
    return S_OK;
  }

 private:
  ComPtr<DateField> txn_date_;
  ComPtr<BaseRef> entity_;
  ComPtr<typename Shapes::IntervalField> duration_;
  ComPtr<BaseRef> item_;
  ComPtr<StringField> notes_;
  ComPtr<BoolField> is_billable_;
  ComPtr<BillableStatusField> billable_status_;
};

class Attributes final : public Automation<IAttributes> {
 public:
  explicit Attributes(std::shared_ptr<MessageSet> set) : set_(std::move(set)) {}
  HRESULT STDMETHODCALLTYPE get_OnError(ENRqOnError* on_error) override {
    *on_error = static_cast<ENRqOnError>(set_->requests.on_error);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_OnError(ENRqOnError on_error) override {
    return guarded([&] {
      if (on_error != roeStop && on_error != roeContinue && on_error != roeRollback)
        raise(380, kComponentSource, "OnError: not an ENRqOnError value.");
      set_->requests.on_error = static_cast<OnError>(on_error);
      set_->record["onError"] = static_cast<int>(on_error);
    });
  }

 private:
  std::shared_ptr<MessageSet> set_;
};

// What a message set of either generation answers to kMessageSetIid.
class MessageSetOwner {
 public:
  explicit MessageSetOwner(std::shared_ptr<MessageSet> set) : set_(std::move(set)) {}
  const std::shared_ptr<MessageSet>& set() const { return set_; }

 protected:
  ~MessageSetOwner() = default;
  std::shared_ptr<MessageSet> set_;
};

template <class Shapes>
class MsgSetRequest final : public Automation<typename Shapes::MessageSet>, public MessageSetOwner {
 public:
  explicit MsgSetRequest(std::shared_ptr<MessageSet> set)
      : MessageSetOwner(std::move(set)), attributes_(make<Attributes>(set_)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object != nullptr && IsEqualIID(iid, kMessageSetIid)) {
      // Not AddRef'ed: the caller holds the object through the pointer it asked.
      *object = static_cast<MessageSetOwner*>(this);
      return S_OK;
    }
    return Automation<typename Shapes::MessageSet>::QueryInterface(iid, object);
  }

  HRESULT STDMETHODCALLTYPE get_Attributes(IAttributes** attributes) override {
    hand_out(attributes, attributes_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE AppendPayrollItemWageQueryRq(IPayrollItemWageQuery** request) override {
    hand_out(request,
             make<PayrollItemWageQueryRq>(append("PayrollItemWageQuery", PayrollItemWageQuery{})));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE AppendEmployeeQueryRq(IEmployeeQuery** request) override {
    append("EmployeeQuery", EmployeeQuery{});
    hand_out(request, make<EmployeeQueryRq>());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE AppendEmployeeAddRq(IEmployeeAdd** request) override {
    hand_out(request, make<EmployeeAddRq>(append("EmployeeAdd", EmployeeAdd{})));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE AppendTimeTrackingAddRq(typename Shapes::TimeEntry** request) override {
    hand_out(request,
             make<TimeTrackingAddRq<Shapes>>(append("TimeTrackingAdd", TimeTrackingAdd{})));
    return S_OK;
  }

 private:
  RequestFields append(const char* type, Request request) {
    const std::size_t index = set_->requests.requests.size();
    set_->requests.requests.push_back(std::move(request));
    set_->record["requests"].push_back({{"type", type}, {"set", json::array()}});
    return RequestFields(set_, index);
  }

  ComPtr<Attributes> attributes_;
};

std::optional<TimeTrackingField> time_entry_field(const std::string& path) {
  if (path == "EntityRef.FullName") return TimeTrackingField::EntityRef;
  if (path == "Duration") return TimeTrackingField::Duration;
  if (path == "TxnDate") return TimeTrackingField::TxnDate;
  if (path == "PayrollItemWageRef.FullName") return TimeTrackingField::PayrollItemWageRef;
  if (path == "IsBillable" || path == "BillableStatus") return TimeTrackingField::IsBillable;
  if (path == "Notes") return TimeTrackingField::Notes;
  return std::nullopt;
}

// The order a time entry's fields were first set in, the fields never set after them.
TimeTrackingFieldOrder order_set(const json& calls) {
  std::vector<TimeTrackingField> order;
  auto note = [&](TimeTrackingField field) {
    if (std::find(order.begin(), order.end(), field) == order.end()) order.push_back(field);
  };
  for (const json& call : calls)
    if (auto field = time_entry_field(call.at(0).get<std::string>())) note(*field);
  for (TimeTrackingField field : kDayEntryFieldOrder) note(field);
  TimeTrackingFieldOrder result{};
  std::copy(order.begin(), order.end(), result.begin());
  return result;
}

}  // namespace

RequestSet MessageSet::to_send() const {
  RequestSet sent = requests;
  for (std::size_t index = 0; index < sent.requests.size(); ++index)
    if (auto* entry = std::get_if<TimeTrackingAdd>(&sent.requests[index]))
      entry->field_order = order_set(record["requests"][index]["set"]);
  return sent;
}

std::string MessageSet::schema_problem() const {
  const bool status = uses_billable_status(requests.major_version, requests.minor_version);
  const std::string refused = status ? "IsBillable" : "BillableStatus";
  const std::size_t count = record["requests"].size();
  for (std::size_t index = 0; index < count; ++index)
    for (const json& call : record["requests"][index]["set"])
      if (call.at(0) == refused)
        return refused + " is not an element of a qbXML " + record["version"].get<std::string>() +
               " TimeTrackingAdd";
  return {};
}

std::shared_ptr<MessageSet> message_set_of(IUnknown* object) {
  if (object == nullptr) return nullptr;
  void* ours = nullptr;
  if (FAILED(object->QueryInterface(kMessageSetIid, &ours))) return nullptr;
  return static_cast<MessageSetOwner*>(ours)->set();
}

namespace {

std::shared_ptr<MessageSet> new_set(std::int32_t major, std::int32_t minor) {
  auto set = std::make_shared<MessageSet>();
  set->requests.major_version = major;
  set->requests.minor_version = minor;
  set->record = {
      {"version", version_text(major, minor)}, {"onError", nullptr}, {"requests", json::array()}};
  return set;
}

}  // namespace

ComPtr<IMsgSetRequest> make_message_set(std::int32_t major, std::int32_t minor) {
  ComPtr<IMsgSetRequest> object = make<MsgSetRequest<EarlyShapes>>(new_set(major, minor));
  return object;
}

ComPtr<IMsgSetRequestN> make_newer_message_set(std::int32_t major, std::int32_t minor) {
  ComPtr<IMsgSetRequestN> object = make<MsgSetRequest<NewerShapes>>(new_set(major, minor));
  return object;
}

}  // namespace zorvat::qbsim
