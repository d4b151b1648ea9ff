#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QString>

#include "Figures.h"
#include "LoopWatch.h"
#include "controls/DocumentFiles.h"

class QWidget;

namespace vandrel::bench {

/// Lines of about 80 characters, together `characters` long.
QString plainText(int characters);

/// Fills a document with as much text in paragraphs of several sizes, with bold words.
void fillRich(QTextDocument &document, int characters);

/// The files of the rich-text box, as the suite has them; native paths.
std::shared_ptr<const DocumentFiles> documentFiles();

double milliseconds(const std::function<void()> &work);
double median(std::vector<double> values);
double worst(const std::vector<double> &values);

/// Lets everything that is due happen, painting included.
void settle();

} // namespace vandrel::bench
