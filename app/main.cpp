#include "app/DesktopPlatform.h"
#include "app/QuibelApp.h"
#include "desktop/PulseCookie.h"

int main(int, char** argv) {
  quibel::desktop::keepPulseCookieInMemory();
  // The application takes no options, and none is handed on to Qt.
  int argc = 1;
  quibel::QuibelApp app(argc, argv);
  quibel::DesktopPlatform platform;
  quibel::platform::Platform::setStandard(&platform);
  return app.run();
}
