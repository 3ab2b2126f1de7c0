#include "tests/support/scripted_platform.h"

#include <deque>
#include <stdexcept>
#include <utility>

namespace sabrel::testing {

struct ScriptedPlatform::Script {
  ScriptedPlatform* owner = nullptr;
  std::deque<ScriptedAnswer> answers;
  std::string conversation;
  DatabaseError last_error;
  std::map<std::string, std::string> properties;
  std::string root_folder;
  int open_cursors = 0;
  int calls = 0;
  int fail_at = 0;
  std::int32_t fail_number = 0;

  void Step(const std::string& line) {
    conversation += line + "\n";
    MayFail();
  }
  // Counts a call that is too common to be written down.
  void MayFail() {
    if (fail_at != 0 && ++calls == fail_at) throw RuntimeError(fail_number, "fault", "injected");
  }

  [[noreturn]] void Throw(const Refusal& refusal) {
    if (refusal.database) {
      last_error = *refusal.database;
      throw DatabaseFailure(last_error);
    }
    throw ConnectionFailed(static_cast<ConnectionFailure>(refusal.connection_code), "no server");
  }

  template <class T>
  T Next(T otherwise) {
    if (answers.empty()) return otherwise;
    auto answer = std::move(answers.front());
    answers.pop_front();
    if (auto* refusal = std::get_if<Refusal>(&answer)) Throw(*refusal);
    if (auto* wanted = std::get_if<T>(&answer)) return std::move(*wanted);
    throw std::logic_error("the script answers another kind of call here");
  }
};

namespace {

using Script = ScriptedPlatform::Script;

// A seam's interface, answered by the script.
template <class Interface>
struct Scripted : Interface {
  explicit Scripted(std::shared_ptr<Script> script) : script_(std::move(script)) {}
  std::shared_ptr<Script> script_;
};

std::string AddressText(const DataServerAddress& a) {
  return " host=" + a.host + " port=" + std::to_string(a.port) + " user=" + a.user +
         " password=" + a.password + " timeout=" + std::to_string(a.timeout_s);
}

void AddCell(RowBlock& block, const Variant& value) {
  switch (value.kind()) {
    case VariantKind::kInt32: return block.AddInt32(value.Get<std::int32_t>());
    case VariantKind::kDouble: return block.AddDouble(value.Get<double>());
    case VariantKind::kDecimal: return block.AddDecimal(value.Get<Decimal>());
    case VariantKind::kDate: return block.AddDate(value.Get<Date>());
    case VariantKind::kString: return block.AddText(value.Get<std::string>());
    case VariantKind::kNull: return block.AddNull();
    default: throw std::logic_error("no server sends a value of this kind");
  }
}

struct ScriptedCursor final : Scripted<Cursor> {
  ScriptedCursor(std::shared_ptr<Script> script, Rows rows)
      : Scripted(std::move(script)), rows_(std::move(rows)) {
    ++script_->open_cursors;
  }
  ~ScriptedCursor() override {
    --script_->open_cursors;
    try {
      script_->conversation += "close\n";
    } catch (const std::bad_alloc&) {
      // A test that has memory run out does not read the conversation.
    }
  }
  const std::vector<std::string>& ColumnNames() const override { return rows_.columns; }

  bool Fetch(RowBlock& block, std::size_t byte_limit) override {
    script_->Step("fetch");
    if (++fetches_ == rows_.fail_at_fetch) throw *rows_.failure;
    while (next_ < rows_.rows.size() && block.Bytes() < byte_limit) {
      for (const Variant& value : rows_.rows[next_]) AddCell(block, value);
      block.EndRow();
      ++next_;
    }
    return next_ < rows_.rows.size();
  }

  Rows rows_;
  std::size_t next_ = 0;
  int fetches_ = 0;
};

struct ScriptedLink final : Scripted<DataLink> {
  using Scripted::Scripted;

  std::unique_ptr<Cursor> Query(std::string_view sql, const DataServerAddress& address) override {
    script_->Step("query [" + std::string(sql) + "]" + AddressText(address));
    return std::make_unique<ScriptedCursor>(script_, script_->Next(Rows{{"X"}, {}}));
  }
  std::int64_t Execute(std::string_view sql, const DataServerAddress& address) override {
    script_->Step("execute [" + std::string(sql) + "]" + AddressText(address));
    static_cast<void>(script_->Next(Rows{}));
    return kUnknownRows;
  }
  RoutineOutcome Call(const RoutineCall& call) override {
    std::string line = "call [" + call.procedure + "]" + AddressText(call.address);
    for (const RoutineParameter& p : call.parameters) {
      line += " (" + p.value + "," + p.type_word + "," + p.name + ")";
    }
    script_->Step(line);
    return script_->Next(RoutineOutcome{});
  }
  void Write(const RowSet& rows) override {
    std::string line = "write [" + rows.table + "]";
    for (const auto& column : rows.columns) line += " " + column.name + ":" + column.type_word;
    for (const std::string_view row : rows.rows) line += " [" + std::string(row) + "]";
    script_->Step(line);
    static_cast<void>(script_->Next(Rows{}));
  }
};

struct ScriptedRowlink final : LinkedRowlink {
  explicit ScriptedRowlink(std::shared_ptr<Script> script)
      : LinkedRowlink(std::make_shared<ScriptedLink>(script)), script_(std::move(script)) {}

  std::shared_ptr<Recordset> MakeRecordset() override {
    script_->Step("make recordset");
    return LinkedRowlink::MakeRecordset();
  }
  std::shared_ptr<ProcedureCall> MakeProcedureCall() override {
    script_->Step("make procedure call");
    return LinkedRowlink::MakeProcedureCall();
  }
  std::shared_ptr<RowSetWriter> MakeRowSetWriter() override {
    script_->Step("make row-set writer");
    return LinkedRowlink::MakeRowSetWriter();
  }
  void ShutDown() override { script_->Step("shut down"); }
  DatabaseError LastDatabaseError() const override {
    script_->MayFail();
    return script_->last_error;
  }
  void Cancel() noexcept override {}

  std::shared_ptr<Script> script_;
};

struct ScriptedKey final : Scripted<RegistryKey> {
  ScriptedKey(std::shared_ptr<Script> script, std::string path)
      : Scripted(std::move(script)), path_(std::move(path)) {}

  static std::unique_ptr<RegistryKey> Open(const std::shared_ptr<Script>& script,
                                           std::string path) {
    script->Step("open key " + path);
    for (const auto& [name, value] : script->owner->registry) {
      if (name.starts_with(path + "\\")) return std::make_unique<ScriptedKey>(script, path);
    }
    return nullptr;
  }
  std::unique_ptr<RegistryKey> OpenSubkey(std::string_view name) const override {
    return Open(script_, path_ + "\\" + std::string(name));
  }
  std::string ReadString(std::string_view name, std::string_view default_value) const override {
    return Find(name).value_or(std::string(default_value));
  }
  bool ReadBoolean(std::string_view name, bool default_value) const override {
    return Find(name).value_or(default_value ? "1" : "0") == "1";
  }

  std::optional<std::string> Find(std::string_view name) const {
    script_->Step("read " + std::string(name));
    const auto& values = script_->owner->registry;
    const auto found = values.find(path_ + "\\" + std::string(name));
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  std::string path_;
};

// What a host gives besides the Data Server.
struct ScriptedHost final : Services, Application, Registry, SpreadsheetApplication {
  explicit ScriptedHost(std::shared_ptr<Script> script) : script_(std::move(script)) {}

  bool TraceSwitch() const override {
    script_->Step("trace switch");
    return script_->owner->trace;
  }
  void WriteTrace(std::string_view text) override {
    script_->Step("trace " + std::string(text));
    if (script_->owner->on_trace) script_->owner->on_trace();
  }
  void WriteLog(std::string_view text) override { script_->Step("log " + std::string(text)); }
  std::int32_t ShowMessage(std::string_view text, std::int32_t style,
                           std::string_view caption) override {
    script_->Step("box " + std::to_string(style) + " [" + std::string(caption) + "] " +
                  std::string(text));
    if (script_->owner->on_box) script_->owner->on_box();
    return script_->owner->box_answer;
  }
  LocaleFacts Locale() const override { return script_->owner->locale; }
  void Assertion(bool condition, std::string_view source, std::string_view module,
                 std::string_view procedure, std::string_view message) override {
    script_->Step(std::string("assertion ") + (condition ? "true " : "false ") +
                  std::string(source) + " " + std::string(module) + " " + std::string(procedure) +
                  " [" + std::string(message) + "]");
  }

  std::string ProductName() const override {
    script_->MayFail();
    return script_->owner->product_name;
  }
  std::string ProductProperty(std::string_view name) const override {
    return script_->properties[std::string(name)];
  }
  void ProductProperty(std::string_view name, std::string_view value) override {
    script_->Step("property " + std::string(name) + "=" + std::string(value));
    script_->properties[std::string(name)] = value;
  }
  std::string RootFolder() const override { return script_->root_folder; }
  void RootFolder(std::string_view folder) override {
    script_->Step("root folder " + std::string(folder));
    script_->root_folder = folder;
  }
  std::string MachineName() const override { return script_->owner->machine_name; }
  std::string DomainName() const override { return script_->owner->domain_name; }
  std::string TransformPassword(std::string_view password) const override {
    return "<" + std::string(password) + ">";
  }
  std::int32_t ErrorCodeOf(std::int32_t number) const override {
    script_->MayFail();
    return CarriedCode(number);
  }
  void Notify() override { script_->Step("notify"); }

  std::unique_ptr<RegistryKey> OpenKey(std::string_view path) const override {
    return ScriptedKey::Open(script_, std::string(path));
  }

  std::unique_ptr<SpreadsheetInstance> CreateInstance(std::string_view automation_class) override {
    struct Instance final : SpreadsheetInstance {
      explicit Instance(std::string version) : version_(std::move(version)) {}
      std::string Version() const override { return version_; }
      std::string version_;
    };
    script_->Step("start " + std::string(automation_class));
    return std::make_unique<Instance>(script_->owner->spreadsheet_version);
  }

  std::shared_ptr<Script> script_;
};

}  // namespace

Refusal Refuse(std::int32_t native_number, std::string message) {
  return {DatabaseError{native_number, "Oracle", "server", std::move(message), "detail"}, 0};
}

Refusal ConnectionRefusal(std::int32_t code) { return {std::nullopt, code}; }

ScriptedPlatform::ScriptedPlatform(std::function<std::shared_ptr<Rowlink>()> open_session)
    : script_(std::make_shared<Script>()) {
  script_->owner = this;
  UnloadThread();
  InstallPlatform([script = script_, open_session = std::move(open_session)] {
    const auto host = std::make_shared<ScriptedHost>(script);
    return Platform{open_session ? open_session() : std::make_shared<ScriptedRowlink>(script), host,
                    host, host, host};
  });
}

ScriptedPlatform::~ScriptedPlatform() {
  UnloadThread();
  InstallPlatform({});
}

void ScriptedPlatform::Answer(ScriptedAnswer answer) {
  script_->answers.push_back(std::move(answer));
}

void ScriptedPlatform::DropAnswers() { script_->answers.clear(); }

void ScriptedPlatform::FailAtCall(int n, std::int32_t number) {
  script_->calls = 0;
  script_->fail_at = n;
  script_->fail_number = number;
}

bool ScriptedPlatform::FaultMet() const { return script_->calls >= script_->fail_at; }

std::string ScriptedPlatform::Conversation() { return std::exchange(script_->conversation, {}); }

int ScriptedPlatform::OpenCursors() const { return script_->open_cursors; }

}  // namespace sabrel::testing
