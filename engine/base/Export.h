#pragma once

/// Marks what the shared library of the engine exports. Everything else in it is hidden.
#define QRV_ENGINE_EXPORT [[gnu::visibility("default")]]
