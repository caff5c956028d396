// What the host asks of its extension: the one function that it looks up by name.
#pragma once

/// Receives a line of text without its end.
using HostPrint = void (*)(void* context, const char* line);

/// The type of `CallFamilies`: calls each family of the library once and prints what came out.
using HostCall = void (*)(HostPrint print, void* context);
