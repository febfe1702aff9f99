#pragma once
// HostWindow: zol-host's window, a lighting host in small. It makes the plug-in object, asks its
// name and initialises it with a helper whose callback feeds the DMX input monitor; it offers
// Configure, Enable, Disable and Term; its fader desk calls SetChannel for every change. A call that
// returns an error shows the error's source and description in the status bar.

#include "host/PluginLoader.h"

#include <QMainWindow>
#include <string>

class QAction;
class QLabel;

namespace zol::host {

class FaderDesk;
class InputMonitor;

class HostWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit HostWindow(PluginLoader& loader, QWidget* parent = nullptr);
    ~HostWindow() override;

    // Makes the plug-in object and calls PluginName and Init. False when no object could be made.
    bool Start(const std::string& hostName = "zol-host");
    void Configure();
    void Enable();
    void Disable();
    void Term();
    // Ends as a host does: Disable while enabled, Term, then the object is released.
    void Shutdown();

    FaderDesk* Desk() const { return desk_; }
    InputMonitor* Monitor() const { return monitor_; }
    QString StatusText() const;
    QString SessionText() const;
    // The code the last call returned (0 when it ran).
    int32_t LastCode() const { return lastCode_; }
    const std::string& PluginName() const { return pluginName_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    bool Check(const char* call, int32_t code);
    void SendLevel(int slot, int level);
    void SetSession(const QString& state);
    void UpdateActions();
    static void OnInput(void* context, int32_t* slot, int32_t* level);

    PluginLoader& loader_;
    UDC_Interface* plugin_ = nullptr;
    DMXC_Helper helper_{};
    std::string pluginName_;
    bool initialised_ = false;
    bool enabled_ = false;
    bool ended_ = false;
    int32_t lastCode_ = 0;

    FaderDesk* desk_ = nullptr;
    InputMonitor* monitor_ = nullptr;
    QLabel* received_ = nullptr;
    QLabel* status_ = nullptr;
    QLabel* session_ = nullptr;
    QAction* configure_ = nullptr;
    QAction* enable_ = nullptr;
    QAction* disable_ = nullptr;
    QAction* term_ = nullptr;
};

} // namespace zol::host
