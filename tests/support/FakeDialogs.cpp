#include "tests/support/FakeDialogs.h"

#include <utility>

#include <QTest>

namespace vandrel::test {

void FakeCommonDialog::choose(const QString &dosPath)
{
    m_answers.emplace_back(dosPath);
}

void FakeCommonDialog::cancel()
{
    m_answers.emplace_back(std::nullopt);
}

void FakeCommonDialog::ShowOpen(QWidget *owner)
{
    show(QStringLiteral("Open"), owner);
}

void FakeCommonDialog::ShowSave(QWidget *owner)
{
    show(QStringLiteral("Save As"), owner);
}

void FakeCommonDialog::show(const QString &kind, QWidget *owner)
{
    shown.append(kind + u' ' + FileName);
    lastOwner = owner;
    if (const auto action = std::exchange(meanwhile, {}))
        action();
    if (m_answers.empty()) {
        QTest::qFail("A file dialog was shown that nobody expected.", __FILE__, __LINE__);
        return;
    }
    if (const std::optional<QString> &answer = m_answers.front())
        FileName = *answer;
    m_answers.pop_front();
}

QString FakeColorDialog::ShowColor(QWidget *owner)
{
    ++shown;
    lastOwner = owner;
    return std::exchange(answer, {}).value_or(QString::number(Color));
}

QPrinter *FakePrinter::hDC(QWidget *, const QString &documentName)
{
    shown.append(documentName);
    if (outputFile.isEmpty())
        return nullptr;
    m_device = std::make_unique<QPrinter>();
    m_device->setOutputFormat(QPrinter::PdfFormat);
    m_device->setOutputFileName(outputFile);
    return m_device.get();
}

} // namespace vandrel::test
