#pragma once
// A small HTTP server for the update check's tests: it listens on 127.0.0.1 at a free port, keeps
// what each client sent, and answers as the test says: one fixed text written in one piece, or
// nothing at all. It stops with the object.

#include <QByteArray>
#include <QTcpServer>
#include <QTcpSocket>
#include <memory>
#include <string>
#include <vector>

namespace zol::test {

class LoopbackHttpServer {
public:
    enum class Mode {
        Answer,      // sends `answer` once the request's empty line has arrived
        Silent,      // reads the request and never answers
        CloseAtOnce, // closes the connection as soon as it is made
    };

    explicit LoopbackHttpServer(Mode mode = Mode::Answer, std::string answer = {})
        : mode_(mode), answer_(std::move(answer)) {
        server_.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] { Accept(); });
    }
    ~LoopbackHttpServer() {
        server_.close();
        for (QTcpSocket* socket : sockets_) {
            socket->abort();
            delete socket;
        }
    }
    LoopbackHttpServer(const LoopbackHttpServer&) = delete;
    LoopbackHttpServer& operator=(const LoopbackHttpServer&) = delete;

    bool Listening() const { return server_.isListening(); }
    uint16_t Port() const { return server_.serverPort(); }
    // "127.0.0.1:<port>", as the UpdateHost setting takes it.
    std::string HostSetting() const { return "127.0.0.1:" + std::to_string(Port()); }
    // Everything each connection has sent so far.
    const std::vector<std::string>& Requests() const { return requests_; }
    int Connections() const { return static_cast<int>(sockets_.size()); }
    bool Answered() const { return answered_; }

private:
    void Accept() {
        while (QTcpSocket* socket = server_.nextPendingConnection()) {
            socket->setParent(nullptr);
            sockets_.push_back(socket);
            const size_t index = requests_.size();
            requests_.emplace_back();
            if (mode_ == Mode::CloseAtOnce) {
                socket->disconnectFromHost();
                continue;
            }
            QObject::connect(socket, &QTcpSocket::readyRead, &server_, [this, socket, index] {
                requests_[index] += socket->readAll().toStdString();
                if (mode_ == Mode::Answer && !answered_ &&
                    requests_[index].find("\r\n\r\n") != std::string::npos) {
                    answered_ = true;
                    socket->write(answer_.data(), static_cast<qint64>(answer_.size()));
                    socket->flush();
                }
            });
        }
    }

    Mode mode_;
    std::string answer_;
    QTcpServer server_;
    std::vector<QTcpSocket*> sockets_;
    std::vector<std::string> requests_;
    bool answered_ = false;
};

} // namespace zol::test
