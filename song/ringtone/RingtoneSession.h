#pragma once

#include <memory>
#include <stop_token>

#include "platform/ExportSession.h"

namespace quibel::song {

/// A session for a song, or null where it is of no kind that can be decoded or
/// where there is no AAC encoder. A song that merely cannot be read just now
/// gives a session that fails with the reason. The session keeps the song open
/// from here on. A stop request, or the session's destruction, cancels the
/// export at the next block; the handler is called all the same. Main thread.
std::shared_ptr<platform::ExportSession> makeExportSession(const platform::FileURL& url,
                                                           std::stop_token stop = {});

}  // namespace quibel::song
