// Serves an instrument on a pseudo-terminal.
#include "simulator/pty_server.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "simulator/session.h"

namespace simulator {
namespace {

// A reader of a terminal may pause as long as it likes: nobody else waits for the line.
constexpr std::chrono::hours kStall{24};

[[noreturn]] void Refuse(const std::string& what) {
  throw std::runtime_error(what + ": " + std::generic_category().message(errno));
}

}  // namespace

class PtyServer::Service {
 public:
  Service(SharedInstrument& instrument, PtyServerOptions options)
      : options_(std::move(options)), master_(context_), terminal_(context_) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0) Refuse("Cannot make a pseudo-terminal");
    master_.assign(master);
    char name[128];
    if (::grantpt(master) != 0 || ::unlockpt(master) != 0 || ::ptsname_r(master, name, sizeof name) != 0) {
      Refuse("Cannot make a pseudo-terminal");
    }
    path_ = name;
    // Held open by the server too: otherwise the line would end with the first client that closes it.
    const int terminal = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0) Refuse("Cannot open the pseudo-terminal " + path_);
    terminal_.assign(terminal);
    termios mode{};
    if (::tcgetattr(terminal, &mode) != 0) Refuse("Cannot set up the pseudo-terminal " + path_);
    ::cfmakeraw(&mode);
    if (::tcsetattr(terminal, TCSANOW, &mode) != 0) Refuse("Cannot set up the pseudo-terminal " + path_);
    master_.non_blocking(true);
    if (!options_.link.empty()) MakeLink();
    session_ = std::make_shared<TerminalSession>(std::move(master_), instrument, backlog_,
                                                 options_.longest_line, kStall, [] {});
    session_->Start();
    thread_ = std::thread([this] { context_.run(); });
  }
  ~Service() { Stop(); }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  void Stop() {
    const std::lock_guard lock(stopping_);
    if (!thread_.joinable()) return;
    asio::post(context_, [this] { session_->Close(); });
    thread_.join();
    session_.reset();
    asio::error_code ignored;
    terminal_.close(ignored);
    std::error_code left;
    if (!options_.link.empty() && std::filesystem::read_symlink(options_.link, left) == path_) {
      std::filesystem::remove(options_.link, left);
    }
  }

  const std::string& Path() const { return path_; }

 private:
  using TerminalSession = Session<asio::posix::stream_descriptor>;

  void MakeLink() {
    std::error_code error;
    if (std::filesystem::is_symlink(std::filesystem::symlink_status(options_.link, error))) {
      std::filesystem::remove(options_.link, error);
    }
    std::filesystem::create_symlink(path_, options_.link, error);
    if (error)
      throw std::runtime_error("Cannot link " + options_.link + " to " + path_ + ": " + error.message());
  }

  const PtyServerOptions options_;
  std::string path_;
  asio::io_context context_{1};
  Backlog backlog_{context_};
  asio::posix::stream_descriptor master_;
  asio::posix::stream_descriptor terminal_;
  std::shared_ptr<TerminalSession> session_;
  std::mutex stopping_;
  std::thread thread_;
};

PtyServer::PtyServer(SharedInstrument& instrument, PtyServerOptions options)
    : service_(std::make_unique<Service>(instrument, std::move(options))) {}
PtyServer::~PtyServer() = default;
const std::string& PtyServer::Path() const { return service_->Path(); }
void PtyServer::Stop() { service_->Stop(); }

}  // namespace simulator
