// A network between clients and a server of this machine that fails as it is told.
//
// It listens on a loopback port of its own and passes everything on, in one thread. A fault holds
// from the moment Become() returns, for connections that run and for new ones, until the next one.
// One thread at a time may tell it.
//
//   FaultProxy proxy(server_port);
//   ... connect to proxy.Port() ...
//   proxy.Become(FaultProxy::Fault::kBlackHole, 1000);
//   proxy.Lift();
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <thread>
#include <utility>
#include <vector>

namespace sabrel::testing {

class Socket {
 public:
  explicit Socket(int descriptor = -1) : descriptor_(descriptor) {}
  ~Socket();
  Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Socket& operator=(Socket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  [[nodiscard]] int Get() const noexcept { return descriptor_; }

 private:
  int descriptor_;
};

class FaultProxy {
 public:
  enum class Fault {
    kNone,
    /// New connections are refused.
    kRefuse,
    /// New connections get no answer at all, as from a machine that is off.
    kUnreachable,
    /// New connections are accepted and closed.
    kAcceptThenClose,
    /// Clients get at most `bytes` every 10 ms.
    kSlow,
    /// Clients get `bytes` more, then each is told that no more come.
    kHalfClose,
    /// Clients get `bytes` more, then nothing passes either way and nothing closes; new connections
    /// are accepted. What was held back goes on when the fault is lifted.
    kBlackHole,
  };
  struct Counts {
    std::size_t accepted = 0;
    std::size_t open = 0;
    std::size_t bytes_to_client = 0;
    std::size_t bytes_to_server = 0;
  };

  explicit FaultProxy(std::int32_t server_port);
  ~FaultProxy();
  FaultProxy(const FaultProxy&) = delete;
  FaultProxy& operator=(const FaultProxy&) = delete;
  [[nodiscard]] std::int32_t Port() const noexcept { return port_; }
  void Become(Fault fault, std::size_t bytes = 0);
  void Lift() { Become(Fault::kNone); }
  /// Ends every connection on both sides, with a reset.
  void CutAll();
  [[nodiscard]] Counts Count();

 private:
  struct Way;
  struct Link;
  void Do(const std::function<void()>& work);
  void Run();
  void Round();
  void Listen(int backlog);
  void Accept();
  void Serve(Link& link);
  void Sweep();
  [[nodiscard]] bool IsMuted() const { return fault_ == Fault::kBlackHole && bytes_ == 0; }
  [[nodiscard]] std::size_t Allowed(const Link& link) const;

  const std::int32_t server_port_;
  std::int32_t port_ = 0;
  Socket wake_;
  Socket reserve_;
  std::atomic<const std::function<void()>*> work_ = nullptr;
  // The loop's own.
  Socket listener_;
  std::vector<Socket> fillers_;
  std::list<Link> links_;
  Fault fault_ = Fault::kNone;
  std::size_t bytes_ = 0;
  Counts counts_;
  bool stopped_ = false;
  std::thread thread_;
};

}  // namespace sabrel::testing
