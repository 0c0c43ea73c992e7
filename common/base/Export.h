#pragma once

/// Marks what `qrv::common` exports. Everything else in the library is hidden.
#if defined(_MSC_VER) && defined(QRV_COMMON_BUILD)
#define QRV_COMMON_EXPORT __declspec(dllexport)
#elif defined(_MSC_VER)
#define QRV_COMMON_EXPORT __declspec(dllimport)
#else
#define QRV_COMMON_EXPORT [[gnu::visibility("default")]]
#endif
