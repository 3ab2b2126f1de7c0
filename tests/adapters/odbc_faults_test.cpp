// What callers see when the way to a server, or the server itself, fails.
#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <thread>

#include "adapters/odbc/odbc_rowlink.h"
#include "adapters/odbc/worker.h"
#include "sabrel/platform/runtime_error.h"
#include "tests/support/fault_proxy.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/process_facts.h"

namespace sabrel::testing {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Network = FaultProxy::Fault;

constexpr std::int32_t kLimitSeconds = 1;
// For what is not to run into a limit, however busy the machine is.
constexpr std::int32_t kEnoughSeconds = 20;
constexpr milliseconds kTolerance{2000};
// 10 MB, far more than is read ahead.
constexpr const char* kManyRows =
    "SELECT pg_backend_pid() AS PID, RPAD('x',1000,'x') AS X FROM PM_PIVOT A, PM_PIVOT B, PM_PIVOT "
    "C, PM_PIVOT D";

/// How often each fault is tried: SABREL_FAULT_ATTEMPTS, 20 without it.
int Attempts() {
  const char* const wanted = std::getenv("SABREL_FAULT_ATTEMPTS");
  return wanted != nullptr ? std::atoi(wanted) : 20;
}

bool BecomesTrue(const std::function<bool()>& fact, milliseconds within = milliseconds(5000)) {
  const auto end = Clock::now() + within;
  while (!fact() && Clock::now() < end) std::this_thread::sleep_for(milliseconds(10));
  return fact();
}

/// One client with a network of its own to the server.
class Client {
 public:
  explicit Client(ConnectionProfile profile, std::int32_t receive_seconds = kLimitSeconds,
                  std::int32_t connect_seconds = kEnoughSeconds)
      : proxy(profile.Port) {
    profile.Port = proxy.Port();
    profile.ConnectTimeout = connect_seconds;
    // The smaller of a profile's and a request's time-out holds.
    profile.ReceiveTimeout = kEnoughSeconds;
    limit_s = receive_seconds;
    rowlink = MakeOdbcRowlink(ProfileSet(profile));
  }
  /// `seconds`: 0 is the client's own limit.
  [[nodiscard]] std::shared_ptr<Recordset> Open(const char* sql, std::int32_t seconds = 0) const {
    const auto rows = rowlink->MakeRecordset();
    rows->Open(sql, "", 0, "", "", seconds == 0 ? limit_s : seconds);
    return rows;
  }
  [[nodiscard]] std::string Ask(const char* sql, std::int32_t seconds = 0) const {
    const Variant value = Open(sql, seconds)->Fields().Item(0).Value();
    return value.kind() == VariantKind::kInt32 ? std::to_string(value.Get<std::int32_t>()) : "";
  }
  /// Connects, so that what follows fails on a connection that worked.
  void Prepare() {
    static_cast<void>(Ask("SELECT 1 FROM DUAL", kEnoughSeconds));
    start = Clock::now();
  }
  void ReadAll() const {
    for (const auto rows = Open(kManyRows); !rows->EndOfFile();) rows->MoveNext();
  }
  static void Kill(const std::string& pid) {
    static_cast<void>(PostgresqlSession().Ask("SELECT pg_terminate_backend(" + pid + ")"));
  }

  FaultProxy proxy;
  std::int32_t limit_s = 0;
  std::shared_ptr<Rowlink> rowlink;
  /// When the call began that is to fail.
  Clock::time_point start = Clock::now();
};

struct Fault {
  const char* name;
  std::int32_t code;
  bool lasts_for_the_limit;
  /// Does what fails.
  std::function<void(Client&)> run;
};

const std::vector<Fault>& Faults() {
  const auto connect = [](const Client& client) { static_cast<void>(client.Open(kManyRows)); };
  static const std::vector<Fault> faults = {
      {"connection refused", 30, false,
       [=](Client& c) {
         c.proxy.Become(Network::kRefuse);
         connect(c);
       }},
      {"silent listener", 23, true,
       [=](Client& c) {
         c.proxy.Become(Network::kUnreachable);
         connect(c);
       }},
      {"accepted, then silence", 23, true,
       [=](Client& c) {
         c.proxy.Become(Network::kBlackHole);
         connect(c);
       }},
      {"accepted, then closed", 30, false,
       [=](Client& c) {
         c.proxy.Become(Network::kAcceptThenClose);
         connect(c);
       }},
      {"slow bytes", 24, true,
       [](Client& c) {
         c.Prepare();
         c.proxy.Become(Network::kSlow, 10000);  // a block, but not an opening, within the limit
         c.ReadAll();
       }},
      {"half closed among rows", 30, false,
       [](Client& c) {
         c.Prepare();
         c.proxy.Become(Network::kHalfClose, 200000);
         c.ReadAll();
       }},
      {"black hole within a row", 24, true,
       [](Client& c) {
         c.Prepare();
         c.proxy.Become(Network::kBlackHole, 200500);
         c.ReadAll();
       }},
      {"black hole while idle", 24, true,
       [](Client& c) {
         c.Prepare();
         c.proxy.Become(Network::kBlackHole);
         static_cast<void>(c.Ask("SELECT 1 FROM DUAL"));
       }},
      {"cut while idle", 30, false,
       [](Client& c) {
         c.Prepare();
         c.proxy.CutAll();
         static_cast<void>(c.Ask("SELECT 1 FROM DUAL"));
       }},
      {"backend killed before", 30, false,
       [](Client& c) {
         Client::Kill(c.Ask("SELECT pg_backend_pid() FROM DUAL"));
         c.start = Clock::now();
         static_cast<void>(c.Ask("SELECT 1 FROM DUAL"));
       }},
      {"backend killed during", 30, false,
       [](Client& c) {
         const std::string pid = c.Ask("SELECT pg_backend_pid() FROM DUAL");
         std::thread killer([&] {
           std::this_thread::sleep_for(milliseconds(100));
           Client::Kill(pid);
           c.start = Clock::now();
         });
         try {
           static_cast<void>(c.Open("SELECT pg_sleep(20) FROM DUAL"));
         } catch (...) {
           killer.join();
           throw;
         }
         killer.join();
       }},
      {"backend killed between fetches", 30, false,
       [](Client& c) {
         const auto rows = c.Open(kManyRows);
         Client::Kill(std::to_string(rows->Fields().Item("PID").Value().Get<std::int32_t>()));
         c.start = Clock::now();
         while (!rows->EndOfFile()) rows->MoveNext();
       }},
  };
  return faults;
}

class OdbcFaults : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!PostgresqlServer()) GTEST_SKIP() << "no PostgreSQL server";
    site = std::make_unique<PostgresqlDatabase>();
  }

  /// Runs into the fault once; the next call must work when the fault is over. Returns how long
  /// the call took beyond the limit that it may use up.
  milliseconds RunInto(const Fault& fault) const {
    Client client(site->Profile(), fault.lasts_for_the_limit ? kLimitSeconds : kEnoughSeconds,
                  fault.code == 23 ? kLimitSeconds : kEnoughSeconds);
    std::int32_t code = 0;
    try {
      fault.run(client);
    } catch (const RuntimeError& failure) {
      code = client.rowlink->ConnectionErrorCode(failure.Number());
      EXPECT_EQ(failure.Description().find(site->Profile().Password), std::string::npos);
      if (code == 0) ADD_FAILURE() << fault.name << ": " << failure.Description();
    }
    const auto taken = std::chrono::duration_cast<milliseconds>(Clock::now() - client.start);
    EXPECT_EQ(code, fault.code) << fault.name;
    client.proxy.Lift();
    EXPECT_TRUE(BecomesTrue([&] {
      try {
        return client.Ask("SELECT 7 FROM DUAL", kEnoughSeconds) == "7";
      } catch (const RuntimeError&) {
        return false;
      }
    })) << fault.name
        << ": the next call does not work";
    return taken - milliseconds(fault.lasts_for_the_limit ? kLimitSeconds * 1000 : 0);
  }

  std::unique_ptr<PostgresqlDatabase> site;
};

TEST_F(OdbcFaults, EveryCallReturnsInTimeWithItsCodeAndTheNextOneWorks) {
  for (const Fault& fault : Faults()) {
    std::vector<milliseconds> taken(static_cast<std::size_t>(Attempts()));
    for (std::size_t first = 0; first < taken.size(); first += 10) {
      std::vector<std::thread> clients;
      for (std::size_t i = first; i < std::min(first + 10, taken.size()); ++i) {
        clients.emplace_back([&, i] { taken[i] = RunInto(fault); });
      }
      for (std::thread& client : clients) client.join();
    }
    const auto [least, most] = std::minmax_element(taken.begin(), taken.end());
    EXPECT_LT(*most, kTolerance) << fault.name;
    std::cout << "[ measured ] " << fault.name << ": " << taken.size() << " times, "
              << least->count() << " to " << most->count() << " ms"
              << (fault.lasts_for_the_limit ? " beyond the limit" : "") << "\n";
  }
}

TEST_F(OdbcFaults, NothingIsLeftWhenTheyAreOver) {
  const auto run = [&](int rounds) {
    for (int i = 0; i < rounds; ++i) {
      for (const Fault& fault : Faults()) {
        if (!fault.lasts_for_the_limit) static_cast<void>(RunInto(fault));
      }
    }
  };
  run(1);  // what is loaded and kept for good
  EXPECT_TRUE(BecomesTrue([] { return RunningThreads() == 1; }));
  const std::size_t descriptors = OpenDescriptors();
  const std::size_t memory = ResidentBytes();
  run(std::max(1, Attempts() / 20));
  for (const Fault& fault : Faults()) {
    if (fault.lasts_for_the_limit) static_cast<void>(RunInto(fault));
  }
  EXPECT_TRUE(BecomesTrue([&] {
    return odbc::WorkersLeftBehind() == 0 && RunningThreads() == 1 &&
           OpenDescriptors() <= descriptors;
  })) << odbc::WorkersLeftBehind()
      << " workers, " << RunningThreads() << " threads, " << OpenDescriptors() << " descriptors of "
      << descriptors;
  EXPECT_TRUE(kKeepsFreedMemory || ResidentBytes() < memory + (std::size_t{64} << 20U));
  std::cout << "[ measured ] memory: " << memory / 1024 << " kB before, " << ResidentBytes() / 1024
            << " kB after\n";
}

TEST_F(OdbcFaults, ASilentAddressIsAskedTwiceAtATime) {
  Client client(site->Profile());
  {
    // Each keeps a connection, which stays for others.
    const auto first = client.Open(kManyRows, kEnoughSeconds);
    const auto second = client.Open(kManyRows, kEnoughSeconds);
    client.Prepare();
  }
  client.proxy.Become(Network::kBlackHole);
  const auto code = [&] {
    const auto failure = FailureIn([&] { static_cast<void>(client.Ask("SELECT 1 FROM DUAL")); });
    return client.rowlink->ConnectionErrorCode(failure.value().Number());
  };
  EXPECT_EQ(code(), 24);
  EXPECT_EQ(code(), 24);
  const auto start = Clock::now();
  EXPECT_EQ(code(), 24);
  EXPECT_LT(Clock::now() - start, milliseconds(900)) << "fails at once";
  client.proxy.Lift();
  EXPECT_TRUE(BecomesTrue([] { return odbc::WorkersLeftBehind() == 0; }));
  EXPECT_EQ(client.Ask("SELECT 1 FROM DUAL", kEnoughSeconds), "1");
}

TEST_F(OdbcFaults, TheCallersClockTellsThatConnectingTookTooLong) {
  Client client(site->Profile(), kLimitSeconds, 2);  // the least that a driver's own limit can be
  client.proxy.Become(Network::kBlackHole);
  const auto failure = FailureIn([&] { client.Prepare(); });
  EXPECT_EQ(client.rowlink->ConnectionErrorCode(failure.value().Number()), 23);
  client.proxy.Lift();
  EXPECT_TRUE(BecomesTrue([] { return odbc::WorkersLeftBehind() == 0; }));
}

TEST_F(OdbcFaults, CancelEndsAStatementAlsoWhenTheNetworkIsSilent) {
  Client client(site->Profile(), kEnoughSeconds);
  for (const bool is_silent : {false, true}) {
    const std::string pid = client.Ask("SELECT pg_backend_pid() FROM DUAL");
    std::thread canceller([&] {
      std::this_thread::sleep_for(milliseconds(200));
      if (is_silent) client.proxy.Become(Network::kBlackHole);
      client.rowlink->Cancel();
    });
    const auto failure = FailureIn([&] {
      client.rowlink->MakeRecordset()->Execute(
          "UPDATE PM_PIVOT SET N = N WHERE pg_sleep(20) IS "
          "NULL",
          "", 0, "", "", 30);
    });
    canceller.join();
    EXPECT_EQ(CarriedCode(failure.value().Number()), kDatabaseErrorCode);
    EXPECT_EQ(client.rowlink->LastDatabaseError().native_number, 1013) << is_silent;
    client.proxy.Lift();
    EXPECT_NE(client.Ask("SELECT pg_backend_pid() FROM DUAL"), pid) << "it may still be cancelled";
  }
  EXPECT_TRUE(BecomesTrue([] { return odbc::WorkersLeftBehind() == 0; }));
}

}  // namespace
}  // namespace sabrel::testing
