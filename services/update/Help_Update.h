#pragma once
// Help_Update: asks the maker's update server for the newest version numbers over one plain HTTP
// request, stores the answer as "Latest_<key>" settings and tells the user whether a newer plug-in
// exists. The socket's connected, readyRead and errorOccurred signals are the connect, data
// arrival and error events of the check.

#include "framework/form/FormView.h"

#include <QAbstractSocket>
#include <memory>
#include <string>

class QLabel;
class QPushButton;
class QTcpSocket;

namespace zol {

class DEV_Status;
class SYS_Status;

class Help_Update : public FormView {
    Q_OBJECT
public:
    explicit Help_Update(QWidget* parent = nullptr);
    ~Help_Update() override;

    static constexpr const char* kName = "Help_Update";

    // The events, public so that a test can see each step.
    void Winsock_Connect();
    void Winsock_DataArrival();
    void Winsock_Error(int number, const std::string& description);
    void Label_WebLink_Click();
    void Button_Exit_Click();

    // Closing the view drops the connection: nothing of the check arrives after it.
    void Unload() override;

    // The server this check talks to ("host" or "host:port").
    const std::string& HostName() const { return hostName_; }

protected:
    void OnControl() override;

private:
    void StartCheck();
    void Compare();

    QLabel* labelTitle_ = nullptr;
    QLabel* labelAdvice_ = nullptr;
    QLabel* labelWebLink_ = nullptr;
    QPushButton* buttonExit_ = nullptr;
    QTcpSocket* winsock_ = nullptr;
    std::shared_ptr<DEV_Status> iState_;
    std::shared_ptr<SYS_Status> sState_;
    std::string hostName_;
    // The Latest_Software text in hand, for the data error message.
    std::string latest_;
    // Set once the check has closed the socket itself: nothing arriving after that is an event.
    bool closedByCheck_ = false;
};

// The number the check treats as "host not found"; every other socket error closes the view.
inline constexpr int kSocketHostNotFound = QAbstractSocket::HostNotFoundError;

} // namespace zol
