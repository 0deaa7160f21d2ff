#pragma once

namespace quibel {

/// Whether the desktop asks for less motion: what moves without a person's doing then
/// stands still. False until somebody says so.
bool isMotionReduced();
void setMotionReduced(bool reduced);

}  // namespace quibel
