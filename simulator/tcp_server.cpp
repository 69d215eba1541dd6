// Serves an instrument over TCP: one thread, one Asio context.
#include "simulator/tcp_server.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <atomic>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "simulator/session.h"

namespace simulator {

using asio::ip::tcp;

namespace {
constexpr int kSocketBuffer = 65'536;
}  // namespace

class TcpServer::Service {
 public:
  Service(SharedInstrument& instrument, TcpServerOptions options)
      : instrument_(instrument), options_(std::move(options)), acceptor_(context_), pause_(context_) {
    asio::error_code error;
    const auto address = asio::ip::make_address(options_.address, error);
    if (!error) {
      const tcp::endpoint endpoint(address, options_.port);
      acceptor_.open(endpoint.protocol(), error);
      if (!error) acceptor_.set_option(tcp::acceptor::reuse_address(true), error);
      // What clients send and do not fetch stays small in the system as well; sockets inherit both.
      if (!error) acceptor_.set_option(asio::socket_base::receive_buffer_size(kSocketBuffer), error);
      if (!error) acceptor_.set_option(asio::socket_base::send_buffer_size(kSocketBuffer), error);
      if (!error) acceptor_.bind(endpoint, error);
      if (!error) acceptor_.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
      throw std::runtime_error("Cannot listen on " + options_.address + " port " +
                               std::to_string(options_.port) + ": " + error.message());
    }
    port_ = acceptor_.local_endpoint().port();
    Accept();
    thread_ = std::thread([this] { context_.run(); });
  }
  ~Service() { Stop(); }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  void Stop() {
    const std::lock_guard lock(stopping_);
    if (!thread_.joinable()) return;
    // With nothing left to wait for, the thread ends by itself and every session with it.
    asio::post(context_, [this] {
      asio::error_code ignored;
      acceptor_.close(ignored);
      pause_.cancel();
      sessions_.Close();
    });
    thread_.join();
  }

  std::uint16_t Port() const { return port_; }
  std::size_t Clients() const { return clients_; }

 private:
  using TcpSession = Session<tcp::socket>;

  // The live sessions, kept weakly so that a connection ends with its last handler.
  class Sessions {
   public:
    void Add(const std::shared_ptr<TcpSession>& session) {
      std::erase_if(live_, [](const auto& entry) { return entry.expired(); });
      live_.push_back(session);
    }
    void Close() {
      for (const auto& entry : live_) {
        if (const auto session = entry.lock()) session->Close();
      }
      live_.clear();
    }

   private:
    std::vector<std::weak_ptr<TcpSession>> live_;
  };

  void Accept() {
    acceptor_.async_accept([this](const asio::error_code& error, tcp::socket socket) {
      if (!acceptor_.is_open()) return;
      if (error) {
        // Out of descriptors: connections that end will free some.
        pause_.expires_after(std::chrono::milliseconds(100));
        pause_.async_wait([this](const asio::error_code& cancelled) {
          if (!cancelled) Accept();
        });
        return;
      }
      if (clients_ < options_.most_clients) Serve(std::move(socket));
      Accept();
    });
  }

  void Serve(tcp::socket socket) {
    asio::error_code error;
    socket.set_option(tcp::no_delay(true), error);
    socket.non_blocking(true, error);
    if (error) return;
    ++clients_;
    const auto session =
        std::make_shared<TcpSession>(std::move(socket), instrument_, backlog_, options_.longest_line,
                                     options_.stall, [this] { --clients_; });
    sessions_.Add(session);
    session->Start();
  }

  SharedInstrument& instrument_;
  const TcpServerOptions options_;
  std::atomic<std::size_t> clients_ = 0;
  Sessions sessions_;
  asio::io_context context_{1};
  Backlog backlog_{context_};
  tcp::acceptor acceptor_;
  asio::steady_timer pause_;
  std::uint16_t port_ = 0;
  std::mutex stopping_;
  std::thread thread_;
};

TcpServer::TcpServer(SharedInstrument& instrument, TcpServerOptions options)
    : service_(std::make_unique<Service>(instrument, std::move(options))) {}
TcpServer::~TcpServer() = default;
std::uint16_t TcpServer::Port() const { return service_->Port(); }
std::size_t TcpServer::Clients() const { return service_->Clients(); }
void TcpServer::Stop() { service_->Stop(); }

}  // namespace simulator
