#pragma once
// IO_Tasks: the hidden view "Transmitter" that holds the DMX input poll. In DMX-in mode the session
// starts it with the host's callback object; every 200 ms it reads the local device's input and
// hands each received level to the host.

#include "device_link/core/Client.h"
#include "framework/form/FormView.h"
#include "plugin/core/HostHelper.h"

#include <QTimer>

namespace zol {

class IO_Tasks : public FormView {
    Q_OBJECT
public:
    static constexpr const char* kName = "IO_Tasks";
    static constexpr int kIntervalMs = 200;

    explicit IO_Tasks(QWidget* parent = nullptr);

    // Starts polling with `host` as the receiver of the levels.
    void Begin(const HostRef& host);
    // Asks the poll to stop at the end of its next tick.
    void Finish();

    // One tick of Task_IP. An error that ends the tick leaves here, with the timer off.
    void Tick();

    QTimer* Task_IP() { return &taskIP_; }
    bool StopRequested() const { return stopRequested_; }
    const HostRef& Host() const { return host_; }
    // The code of the last error that left a tick run by the timer (0: none yet).
    int32_t LastEscapedCode() const { return lastEscapedCode_; }

private:
    void OnTaskIP();
    // Runs one statement of the tick under its handler. False: the tick ends here quietly.
    bool Guarded(const std::function<void()>& statement);
    void Deliver(const Bytes& reply);
    void SendToHost(int32_t slot, int32_t level);

    HostRef host_;
    bool stopRequested_ = false;
    QTimer taskIP_;
    int32_t lastEscapedCode_ = 0;
};

// Registers the view "IO_Tasks" with the view factory.
void RegisterIoTasks();

} // namespace zol
