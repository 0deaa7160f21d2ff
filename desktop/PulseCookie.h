#pragma once

namespace quibel::desktop {

/// PulseAudio's library writes a cookie to the person's configuration folder where there
/// is none. After this it finds one in memory instead. One that is there is left to it, and
/// so is another place that the environment names. To be called before there are threads.
void keepPulseCookieInMemory();

}  // namespace quibel::desktop
