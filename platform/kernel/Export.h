#pragma once

/// Marks what `qrv::platform` exports. Everything else in the library is hidden. An attribute in
/// the standard's form, which g++ 12 takes together with [[nodiscard]].
#if defined(_MSC_VER) && defined(QRV_PLATFORM_BUILD)
#define QRV_PLATFORM_EXPORT __declspec(dllexport)
#elif defined(_MSC_VER)
#define QRV_PLATFORM_EXPORT __declspec(dllimport)
#else
#define QRV_PLATFORM_EXPORT [[gnu::visibility("default")]]
#endif
