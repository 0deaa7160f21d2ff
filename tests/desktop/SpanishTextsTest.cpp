#include <QDialogButtonBox>
#include <QFile>
#include <QLibraryInfo>
#include <QLocale>
#include <QPushButton>

#include <gtest/gtest.h>

#include "desktop/SpanishTexts.h"

namespace quibel::desktop {
namespace {

TEST(SpanishTexts, QtsOwnButtonsSpeakSpanishWhateverTheSystemDoes) {
  const auto texts =
      QLibraryInfo::path(QLibraryInfo::TranslationsPath) + QStringLiteral("/qtbase_es.qm");
  if (!QFile::exists(texts)) GTEST_SKIP() << "Qt's translations are not installed";
  installSpanishTexts(*QCoreApplication::instance());
  const QDialogButtonBox box(QDialogButtonBox::Cancel);
  EXPECT_EQ(box.button(QDialogButtonBox::Cancel)->text(), QStringLiteral("Cancelar"));
  EXPECT_EQ(QLocale().language(), QLocale::Spanish);
}

}  // namespace
}  // namespace quibel::desktop
