// What the drawing operations ask the desktop's hooks.
#pragma once

namespace tarvex::platform {

int PixelsPerInch();

}  // namespace tarvex::platform
