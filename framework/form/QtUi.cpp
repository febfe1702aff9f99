#include "framework/form/QtUi.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <cstdlib>

namespace zol {
namespace {

QString ToDisplay(const std::string& text) {
    QString out = QString::fromStdString(text);
    out.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return out;
}

struct ButtonSet {
    QList<QMessageBox::StandardButton> buttons;
    int closeAnswer;
};

ButtonSet ButtonsOf(int style) {
    switch (style & vb::kButtonMask) {
    case vb::OKCancel:
        return {{QMessageBox::Ok, QMessageBox::Cancel}, vb::Cancel};
    case vb::AbortRetryIgnore:
        return {{QMessageBox::Abort, QMessageBox::Retry, QMessageBox::Ignore}, vb::Cancel};
    case vb::YesNoCancel:
        return {{QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel}, vb::Cancel};
    case vb::YesNo:
        return {{QMessageBox::Yes, QMessageBox::No}, vb::Cancel};
    case vb::RetryCancel:
        return {{QMessageBox::Retry, QMessageBox::Cancel}, vb::Cancel};
    default:
        return {{QMessageBox::Ok}, vb::OK};
    }
}

QMessageBox::Icon IconOf(int style) {
    switch (style & vb::kIconMask) {
    case vb::Critical:
        return QMessageBox::Critical;
    case vb::Question:
        return QMessageBox::Question;
    case vb::Exclamation:
        return QMessageBox::Warning;
    case vb::Information:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

int AnswerOf(QMessageBox::StandardButton button, int closeAnswer) {
    switch (button) {
    case QMessageBox::Ok:
        return vb::OK;
    case QMessageBox::Cancel:
        return vb::Cancel;
    case QMessageBox::Abort:
        return vb::Abort;
    case QMessageBox::Retry:
        return vb::Retry;
    case QMessageBox::Ignore:
        return vb::Ignore;
    case QMessageBox::Yes:
        return vb::Yes;
    case QMessageBox::No:
        return vb::No;
    default:
        return closeAnswer;
    }
}

} // namespace

int QtUi::MsgBox(const std::string& prompt, int style, const std::optional<std::string>& title) {
    QMessageBox box;
    box.setObjectName(QStringLiteral("MsgBox"));
    box.setWindowTitle(QString::fromStdString(title ? *title : std::string(AppTitle())));
    box.setText(ToDisplay(prompt));
    box.setIcon(IconOf(style));
    const ButtonSet set = ButtonsOf(style);
    QList<QAbstractButton*> made;
    for (QMessageBox::StandardButton b : set.buttons) {
        made.push_back(box.addButton(b));
    }
    int defaultIndex = 0;
    if ((style & vb::DefaultButton3) != 0) {
        defaultIndex = 2;
    } else if ((style & vb::DefaultButton2) != 0) {
        defaultIndex = 1;
    }
    if (defaultIndex < made.size()) {
        box.setDefaultButton(qobject_cast<QPushButton*>(made[defaultIndex]));
    }
    // A box with a Cancel button, or with one button only, can be closed; closing answers as the
    // style says.
    if (box.button(QMessageBox::Cancel) != nullptr) {
        box.setEscapeButton(QMessageBox::Cancel);
    } else if (made.size() == 1) {
        box.setEscapeButton(made.front());
    }
    box.exec();
    QAbstractButton* clicked = box.clickedButton();
    if (clicked == nullptr) {
        return set.closeAnswer;
    }
    return AnswerOf(box.standardButton(clicked), set.closeAnswer);
}

std::optional<std::string> QtUi::InputBox(const std::string& prompt, const std::string& title,
                                          const std::string& defaultText) {
    bool ok = false;
    const QString answer = QInputDialog::getText(
        nullptr, QString::fromStdString(title.empty() ? std::string(AppTitle()) : title), ToDisplay(prompt),
        QLineEdit::Normal, QString::fromStdString(defaultText), &ok);
    if (!ok) {
        return std::nullopt;
    }
    return answer.toStdString();
}

void QtUi::Beep() {
    QApplication::beep();
}

void QtUi::SetMousePointer(int pointer) {
    pointer_ = pointer;
    while (overrides_ > 0) {
        QGuiApplication::restoreOverrideCursor();
        --overrides_;
    }
    if (pointer == kPointerDefault) {
        return;
    }
    Qt::CursorShape shape = Qt::ArrowCursor;
    if (pointer == kPointerHourglass) {
        shape = Qt::WaitCursor;
    } else if (pointer == 13) {
        shape = Qt::BusyCursor;
    }
    QGuiApplication::setOverrideCursor(QCursor(shape));
    ++overrides_;
}

bool QtUi::OpenUrl(const std::string& url) {
    return QDesktopServices::openUrl(QUrl(QString::fromStdString(url)));
}

FileDialogResult QtUi::FileDialog(const FileDialogRequest& request) {
    constexpr long kOverwritePrompt = 0x2;
    constexpr long kAllowMultiSelect = 0x200;
    constexpr long kFileMustExist = 0x1000;
    QFileDialog dialog(nullptr, QString::fromStdString(request.caption));
    dialog.setObjectName(QStringLiteral("FileDialog"));
    QStringList filters;
    for (const auto& [description, pattern] : request.filters) {
        QString patterns = QString::fromStdString(pattern);
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        filters << QString::fromStdString(description).trimmed() + QStringLiteral(" (") + patterns +
                       QStringLiteral(")");
    }
    if (!filters.isEmpty()) {
        dialog.setNameFilters(filters);
        const int index = request.filterIndex - 1;
        if (index >= 0 && index < filters.size()) {
            dialog.selectNameFilter(filters[index]);
        }
    }
    if (!request.initialDir.empty()) {
        dialog.setDirectory(QString::fromStdString(request.initialDir));
    }
    if (!request.fileName.empty()) {
        dialog.selectFile(QString::fromStdString(request.fileName));
    }
    if (request.save) {
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setFileMode(QFileDialog::AnyFile);
        dialog.setOption(QFileDialog::DontConfirmOverwrite, (request.flags & kOverwritePrompt) == 0);
    } else {
        dialog.setAcceptMode(QFileDialog::AcceptOpen);
        // A single name may be one that does not exist yet unless the caller asks for an existing
        // file; several names are always existing files.
        if ((request.flags & kAllowMultiSelect) != 0) {
            dialog.setFileMode(QFileDialog::ExistingFiles);
        } else {
            dialog.setFileMode((request.flags & kFileMustExist) != 0 ? QFileDialog::ExistingFile
                                                                     : QFileDialog::AnyFile);
        }
    }
    FileDialogResult result;
    if (dialog.exec() != QDialog::Accepted) {
        result.folder = dialog.directory().absolutePath().toStdString();
        return result;
    }
    const QStringList chosen = dialog.selectedFiles();
    result.chosen = !chosen.isEmpty();
    result.folder = chosen.isEmpty() ? dialog.directory().absolutePath().toStdString()
                                     : QFileInfo(chosen.front()).absolutePath().toStdString();
    for (const QString& file : chosen) {
        result.names.push_back(QFileInfo(file).fileName().toStdString());
    }
    return result;
}

void QtUi::Halt() {
    EndProgram();
}

QtUi& qtUi() {
    static QtUi instance;
    return instance;
}

} // namespace zol
