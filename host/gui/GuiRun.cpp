#include "host/gui/GuiRun.h"

#include "host/PluginLoader.h"
#include "host/gui/HostWindow.h"

#include <QApplication>
#include <QGuiApplication>
#include <QMessageBox>
#include <cstdio>
#include <string>

namespace zol::host {

int RunGui(int argc, char** argv) {
    std::string path = PluginLoader::DefaultPath();
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--plugin" && i + 1 < argc) {
            path = argv[++i];
        } else {
            std::fprintf(stderr, "usage: zol-host [--plugin PATH]\n       zol-host --headless [options]\n");
            return 2;
        }
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("zol-host"));

    // Where nobody can see a box (no display), a failure is told on the console only.
    const QString platform = QGuiApplication::platformName();
    const bool boxes = platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");

    PluginLoader loader;
    std::string why;
    if (!loader.Load(path, why)) {
        std::fprintf(stderr, "zol-host: %s\n", why.c_str());
        if (boxes) {
            QMessageBox::critical(nullptr, QStringLiteral("zol-host"), QString::fromStdString(why));
        }
        return 2;
    }
    int code = 0;
    {
        HostWindow window(loader);
        if (!window.Start()) {
            std::fprintf(stderr, "zol-host: the plug-in object could not be made\n");
            if (boxes) {
                QMessageBox::critical(&window, QStringLiteral("zol-host"),
                                      QStringLiteral("The plug-in object could not be made."));
            }
            return 4;
        }
        window.show();
        code = QApplication::exec();
    }
    loader.Unload();
    return code;
}

} // namespace zol::host
