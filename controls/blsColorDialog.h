#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace vandrel {

/// The colour chooser. User-interface thread only.
class blsColorDialog : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The colour the chooser starts with and returns when the user cancels: an RGB Long (0x00BBGGRR).
    qint32 Color = 0;

    /// Shows the chooser over `owner` and returns the colour as decimal text of an RGB Long; the starting
    /// colour when the user cancels, so that a cancelled chooser changes nothing.
    virtual QString ShowColor(QWidget *owner) = 0;
};

} // namespace vandrel
