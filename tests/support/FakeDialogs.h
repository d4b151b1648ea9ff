#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include <QPrinter>
#include <QStringList>

#include "controls/CommonDialog.h"
#include "controls/Printer.h"
#include "controls/blsColorDialog.h"

namespace vandrel::test {

/// A file dialog that is answered in advance. Showing it without an answer left fails the running test and is
/// a cancel.
class FakeCommonDialog final : public CommonDialog
{
    Q_OBJECT

public:
    /// The next dialog chooses that file.
    void choose(const QString &dosPath);
    /// The next dialog is cancelled.
    void cancel();

    void ShowOpen(QWidget *owner) override;
    void ShowSave(QWidget *owner) override;

    /// What was shown: "Open" or "Save As", and the file name it was shown with, e.g. "Save As *.rtf".
    QStringList shown;
    QWidget *lastOwner = nullptr;
    /// Runs while the next dialog is open.
    std::function<void()> meanwhile;

private:
    void show(const QString &kind, QWidget *owner);

    std::deque<std::optional<QString>> m_answers;
};

/// A colour chooser that is answered in advance; without an answer it is cancelled.
class FakeColorDialog final : public blsColorDialog
{
    Q_OBJECT

public:
    QString ShowColor(QWidget *owner) override;

    /// What the next chooser returns; Null for a cancel.
    std::optional<QString> answer;
    int shown = 0;
    QWidget *lastOwner = nullptr;
};

/// A printer that prints into a PDF file, or is cancelled.
class FakePrinter final : public Printer
{
    Q_OBJECT

public:
    QPrinter *hDC(QWidget *owner, const QString &documentName) override;

    /// The file that the next print goes to; "" for a cancelled dialog.
    QString outputFile;
    /// The documents' names, in order.
    QStringList shown;

private:
    std::unique_ptr<QPrinter> m_device;
};

} // namespace vandrel::test
