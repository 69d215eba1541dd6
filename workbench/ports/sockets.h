// The differences between the socket interfaces of POSIX and Windows, as far as the TCP link meets them.
#pragma once

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#endif

#include <chrono>
#include <cstddef>
#include <string>
#include <system_error>

namespace workbench::sockets {

#ifdef _WIN32

using Socket = SOCKET;
inline constexpr Socket kNone = INVALID_SOCKET;

inline void Start() {
  static const int started = [] {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data);
  }();
  static_cast<void>(started);
}
inline int LastError() { return WSAGetLastError(); }
inline bool WouldBlock(int error) { return error == WSAEWOULDBLOCK || error == WSAETIMEDOUT; }
inline bool Connecting(int error) { return error == WSAEWOULDBLOCK; }
inline bool Signalled(int error) { return error == WSAEINTR; }
inline bool Refused(int error) { return error == WSAECONNREFUSED; }
inline void Close(Socket socket) { closesocket(socket); }
inline void Blocking(Socket socket, bool blocking) {
  u_long mode = blocking ? 0 : 1;
  ioctlsocket(socket, FIONBIO, &mode);
}
inline int Poll(pollfd* entry, int milliseconds) { return WSAPoll(entry, 1, milliseconds); }
inline int Send(Socket socket, const char* data, std::size_t size) {
  return ::send(socket, data, static_cast<int>(size), 0);
}
inline int Receive(Socket socket, char* data, std::size_t size) {
  return ::recv(socket, data, static_cast<int>(size), 0);
}
/// Receives what is there, without waiting.
inline int ReceiveArrived(Socket socket, char* data, std::size_t size) {
  Blocking(socket, false);
  const int received = ::recv(socket, data, static_cast<int>(size), 0);
  const int error = WSAGetLastError();
  Blocking(socket, true);
  WSASetLastError(error);
  return received;
}
inline void SliceOption(Socket socket, int option, std::chrono::milliseconds slice) {
  const DWORD value = static_cast<DWORD>(slice.count());
  ::setsockopt(socket, SOL_SOCKET, option, reinterpret_cast<const char*>(&value), sizeof value);
}

#else

using Socket = int;
inline constexpr Socket kNone = -1;

inline void Start() {}
inline int LastError() { return errno; }
inline bool WouldBlock(int error) { return error == EAGAIN || error == EWOULDBLOCK; }
inline bool Connecting(int error) { return error == EINPROGRESS; }
inline bool Signalled(int error) { return error == EINTR; }
inline bool Refused(int error) { return error == ECONNREFUSED; }
inline void Close(Socket socket) { ::close(socket); }
inline void Blocking(Socket socket, bool blocking) {
  const int flags = ::fcntl(socket, F_GETFL);
  ::fcntl(socket, F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
}
inline int Poll(pollfd* entry, int milliseconds) { return ::poll(entry, 1, milliseconds); }
inline ssize_t Send(Socket socket, const char* data, std::size_t size) {
  return ::send(socket, data, size, MSG_NOSIGNAL);
}
inline ssize_t Receive(Socket socket, char* data, std::size_t size) { return ::recv(socket, data, size, 0); }
/// Receives what is there, without waiting.
inline ssize_t ReceiveArrived(Socket socket, char* data, std::size_t size) {
  return ::recv(socket, data, size, MSG_DONTWAIT);
}
inline void SliceOption(Socket socket, int option, std::chrono::milliseconds slice) {
  timeval value{};
  value.tv_usec = static_cast<suseconds_t>(std::chrono::microseconds(slice).count());
  ::setsockopt(socket, SOL_SOCKET, option, &value, sizeof value);
}

#endif

inline void Flag(Socket socket, int level, int option, int value) {
  ::setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

inline std::string ErrorText(int error) { return std::system_category().message(error); }

}  // namespace workbench::sockets
