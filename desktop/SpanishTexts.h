#pragma once

#include <QCoreApplication>

namespace quibel::desktop {

/// Has Qt's own texts (the file panels, standard buttons) in Spanish, as the
/// rest of the window is, whatever the system's language. Call before any widget.
void installSpanishTexts(QCoreApplication& application);

}  // namespace quibel::desktop
