#include "tests/support/fault_proxy.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace sabrel::testing {
namespace {

constexpr std::chrono::milliseconds kTick{10};

Socket Tcp(int flags = 0) {
  return Socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
}

template <class Value>
void SetOption(const Socket& socket, int level, int option, Value value) {
  ::setsockopt(socket.Get(), level, option, &value, sizeof value);
}

// Calls ::bind or ::connect with an address on the loopback.
template <class Call>
bool OnPort(Call call, const Socket& socket, std::int32_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return call(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

Socket Bound(std::int32_t port) {
  Socket socket = Tcp();
  SetOption(socket, SOL_SOCKET, SO_REUSEADDR, 1);
  if (!OnPort(::bind, socket, port)) throw std::runtime_error("the proxy gets no port");
  return socket;
}

std::int32_t PortOf(const Socket& socket) {
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  ::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

}  // namespace

Socket::~Socket() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

// One direction of a connection.
struct FaultProxy::Way {
  std::string pending = {};
  bool ended = false;   // nothing more comes from its source
  bool closed = false;  // and its target was told so

  // False when the connection is broken.
  bool Read(const Socket& source) {
    if (ended || !pending.empty()) return true;
    pending.resize(65536);
    const ssize_t size = ::recv(source.Get(), pending.data(), pending.size(), MSG_DONTWAIT);
    pending.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    ended = size == 0;
    return size >= 0 || errno == EAGAIN;
  }
  bool Write(const Socket& target, std::size_t limit, std::size_t& written) {
    if (const std::size_t size = std::min(pending.size(), limit); size > 0) {
      const ssize_t sent = ::send(target.Get(), pending.data(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
      if (sent < 0) return errno == EAGAIN;
      written = static_cast<std::size_t>(sent);
      pending.erase(0, written);
    }
    if (ended && pending.empty()) Close(target);
    return true;
  }
  void Close(const Socket& target) {
    if (!closed) ::shutdown(target.Get(), SHUT_WR);
    *this = {{}, true, true};
  }
};

struct FaultProxy::Link {
  Socket client;
  Socket server;
  Way to_client = {};
  Way to_server = {};
  std::size_t left_this_tick = 0;
  bool broken = false;
};

// The reserve keeps the port while nobody listens on it.
FaultProxy::FaultProxy(std::int32_t server_port)
    : server_port_(server_port),
      wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      reserve_(Bound(0)) {
  port_ = PortOf(reserve_);
  Listen(SOMAXCONN);
  thread_ = std::thread([this] { Run(); });
}

FaultProxy::~FaultProxy() {
  Do([this] { stopped_ = true; });
  thread_.join();
}

void FaultProxy::Become(Fault fault, std::size_t bytes) {
  Do([=, this] {
    fault_ = fault;
    bytes_ = bytes;
    fillers_.clear();
    listener_ = Socket();
    if (fault != Fault::kRefuse) Listen(fault == Fault::kUnreachable ? 0 : SOMAXCONN);
    // A full queue of connections that nobody accepts: further ones are not answered.
    for (int i = 0; i < 4 && fault == Fault::kUnreachable; ++i) {
      fillers_.push_back(Tcp(SOCK_NONBLOCK));
      OnPort(::connect, fillers_.back(), port_);
    }
  });
}

void FaultProxy::CutAll() {
  Do([this] {
    for (Link& link : links_) link.broken = true;
    Sweep();
  });
}

FaultProxy::Counts FaultProxy::Count() {
  Counts counts;
  Do([&] {
    counts = counts_;
    counts.open = links_.size();
  });
  return counts;
}

// Has the loop do it between two of its rounds.
void FaultProxy::Do(const std::function<void()>& work) {
  work_ = &work;
  static_cast<void>(::eventfd_write(wake_.Get(), 1));
  work_.wait(&work);
}

void FaultProxy::Run() {
  while (!stopped_) {
    Round();
    if (fault_ == Fault::kSlow) std::this_thread::sleep_for(kTick);
    eventfd_t ignored = 0;
    ::eventfd_read(wake_.Get(), &ignored);
    if (const auto* work = work_.load(); work != nullptr) {
      (*work)();
      work_ = nullptr;
      work_.notify_one();
    }
  }
}

void FaultProxy::Round() {
  // A side from which nothing is wanted is not asked at all: it would tell in every round that it
  // was hung up.
  const auto wanted = [&](const Socket& side, const Way& from, const Way& to, bool may_write) {
    const bool reads = !IsMuted() && !from.ended && from.pending.empty();
    const bool writes = !IsMuted() && !to.pending.empty() && may_write;
    return pollfd{reads || writes ? side.Get() : -1,
                  static_cast<short>((reads ? POLLIN : 0) | (writes ? POLLOUT : 0)), 0};
  };
  const bool accepts = fault_ != Fault::kUnreachable;
  std::vector<pollfd> polled = {{wake_.Get(), POLLIN, 0},
                                {accepts ? listener_.Get() : -1, POLLIN, 0}};
  for (Link& link : links_) {
    link.left_this_tick = bytes_;
    polled.push_back(wanted(link.client, link.to_server, link.to_client, Allowed(link) > 0));
    polled.push_back(wanted(link.server, link.to_client, link.to_server, true));
  }
  ::poll(polled.data(), polled.size(), -1);
  std::size_t i = 2;
  for (Link& link : links_) {
    if ((polled[i].revents | polled[i + 1].revents) != 0 && !IsMuted()) Serve(link);
    i += 2;
  }
  if (polled[1].revents != 0) Accept();
  Sweep();
}

void FaultProxy::Listen(int backlog) {
  listener_ = Bound(port_);
  ::listen(listener_.Get(), backlog);
}

void FaultProxy::Accept() {
  Socket client(::accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (client.Get() < 0) return;
  ++counts_.accepted;
  Socket server = Tcp();
  if (fault_ == Fault::kAcceptThenClose || !OnPort(::connect, server, server_port_)) return;
  for (const Socket* side : {&client, &server}) SetOption(*side, IPPROTO_TCP, TCP_NODELAY, 1);
  links_.push_back({std::move(client), std::move(server)});
}

void FaultProxy::Serve(Link& link) {
  std::size_t to_client = 0;
  std::size_t to_server = 0;
  link.broken = !link.to_server.Read(link.client) || !link.to_client.Read(link.server) ||
                !link.to_server.Write(link.server, SIZE_MAX, to_server) ||
                !link.to_client.Write(link.client, Allowed(link), to_client);
  counts_.bytes_to_server += to_server;
  counts_.bytes_to_client += to_client;
  link.left_this_tick -= std::min(link.left_this_tick, to_client);
  if (fault_ == Fault::kHalfClose || fault_ == Fault::kBlackHole) bytes_ -= to_client;
}

std::size_t FaultProxy::Allowed(const Link& link) const {
  if (fault_ == Fault::kSlow) return link.left_this_tick;
  return fault_ == Fault::kHalfClose || fault_ == Fault::kBlackHole ? bytes_ : SIZE_MAX;
}

// Ends what is to end.
void FaultProxy::Sweep() {
  for (Link& link : links_) {
    if (fault_ == Fault::kHalfClose && bytes_ == 0) link.to_client.Close(link.client);
    if (!link.broken) continue;
    for (const Socket* side : {&link.client, &link.server}) {
      SetOption(*side, SOL_SOCKET, SO_LINGER, linger{1, 0});
    }
  }
  links_.remove_if([](const Link& link) {
    return link.broken || (link.to_client.closed && link.to_server.closed);
  });
}

}  // namespace sabrel::testing
