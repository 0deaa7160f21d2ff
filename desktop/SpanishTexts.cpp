#include "desktop/SpanishTexts.h"

#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <memory>

namespace quibel::desktop {

void installSpanishTexts(QCoreApplication& application) {
  const QLocale spanish(QLocale::Spanish, QLocale::Spain);
  QLocale::setDefault(spanish);
  auto translator = std::make_unique<QTranslator>(&application);
  if (translator->load(spanish, QStringLiteral("qtbase"), QStringLiteral("_"),
                       QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    QCoreApplication::installTranslator(translator.release());  // owned by the application
}

}  // namespace quibel::desktop
