#include "adapters/odbc/reachability.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>
#include <thread>

#include "adapters/odbc/connection_text.h"

namespace sabrel::odbc {
namespace {

using Clock = std::chrono::steady_clock;

class Socket {
 public:
  Socket(int family, int protocol)
      : descriptor_(::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, protocol)) {}
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  [[nodiscard]] int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

ConnectionFailure FailureOfConnect(int error) {
  switch (error) {
    case ETIMEDOUT:
    case EAGAIN: return ConnectionFailure::kConnectTimeOut;
    case ECONNREFUSED:
    case ECONNRESET:
    case ECONNABORTED:
    // A socket that is not there, or not ours to open.
    case ENOENT:
    case ENOTDIR:
    case EACCES: return ConnectionFailure::kRefusedOrSevered;
    default: return ConnectionFailure::kNetworkFailed;
  }
}

/// Milliseconds until `limit` for poll, rounded up; -1 without a limit.
int PollTime(const Deadline& limit) {
  if (!limit) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*limit - Clock::now()).count();
  return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
}

/// The error that a connect under way ends with, 0 for a connection, ETIMEDOUT when `limit` passes.
int ErrorOfConnect(int descriptor, const Deadline& limit) {
  while (true) {
    pollfd waited{descriptor, POLLOUT, 0};
    const int ready = ::poll(&waited, 1, PollTime(limit));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return errno;
    if (ready == 0) return ETIMEDOUT;
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
  }
}

std::optional<ConnectionFailure> Ask(int family, int protocol, const sockaddr* address,
                                     socklen_t size, const Deadline& limit) {
  const Socket socket(family, protocol);
  if (socket.Descriptor() < 0) return ConnectionFailure::kNetworkFailed;
  constexpr auto kPause = std::chrono::milliseconds(10);
  while (::connect(socket.Descriptor(), address, size) != 0) {
    // A Unix socket whose queue is full says so at once; the others go on in the background, also
    // after a signal.
    if (errno == EAGAIN && limit && Clock::now() < *limit) {
      std::this_thread::sleep_for(kPause);
      continue;
    }
    int error = errno;
    if (error == EINPROGRESS || error == EINTR) error = ErrorOfConnect(socket.Descriptor(), limit);
    if (error == 0) return std::nullopt;
    return FailureOfConnect(error);
  }
  return std::nullopt;
}

/// How much a failure tells: an address that refuses is there, one that is silent may be.
int Weight(ConnectionFailure failure) {
  if (failure == ConnectionFailure::kRefusedOrSevered) return 2;
  return failure == ConnectionFailure::kConnectTimeOut ? 1 : 0;
}

/// An equal share of the time that is left for each address not yet asked, so that a silent one
/// leaves time for the next.
Deadline ShareOf(const Deadline& until, std::ptrdiff_t addresses) {
  if (!until) return until;
  const auto now = Clock::now();
  return now + std::max(*until - now, Clock::duration::zero()) / addresses;
}

}  // namespace

std::optional<ConnectionFailure> ReachabilityOfSocket(const std::string& file,
                                                      const Deadline& until) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (file.size() >= sizeof address.sun_path) return ConnectionFailure::kHostUnknown;
  std::memcpy(address.sun_path, file.c_str(), file.size() + 1);
  return Ask(AF_UNIX, 0, static_cast<const sockaddr*>(static_cast<const void*>(&address)),
             sizeof address, until);
}

std::optional<ConnectionFailure> ReachabilityOf(const std::string& host, std::int32_t port,
                                                const Deadline& until) {
  const std::string name(WithoutBrackets(host));
  addrinfo wanted{};
  wanted.ai_family = AF_UNSPEC;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(name.c_str(), std::to_string(port).c_str(), &wanted, &found) != 0) {
    return ConnectionFailure::kHostUnknown;
  }
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> addresses(found, ::freeaddrinfo);
  std::ptrdiff_t left = 0;
  for (const addrinfo* at = found; at != nullptr; at = at->ai_next) ++left;
  ConnectionFailure telling = ConnectionFailure::kNetworkFailed;
  for (const addrinfo* at = found; at != nullptr; at = at->ai_next, --left) {
    const auto failure =
        Ask(at->ai_family, at->ai_protocol, at->ai_addr, at->ai_addrlen, ShareOf(until, left));
    if (!failure) return std::nullopt;
    if (Weight(*failure) > Weight(telling)) telling = *failure;
  }
  return telling;
}

}  // namespace sabrel::odbc
