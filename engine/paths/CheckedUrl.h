#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

namespace qrv {

/// A storage URL whose parts are safe to use as names of files: "po:" and a digest (see Digest.h),
/// or "tf:", a store's name of at most 200 letters, digits, "-" and "_", which is no device's on
/// Windows, "#" and a digest. Only `check` makes one.
class CheckedUrl {
public:
    /// Fails with a message that names the URL.
    static Expected<CheckedUrl> check(const OdString& url);

    const OdString& text() const { return text_; }
    bool isDrawing() const;
    /// The digest of the contents that the URL names.
    const OdString& digest() const { return digest_; }
    /// The name of the drawing store; empty for an object.
    const OdString& store() const { return store_; }

private:
    CheckedUrl(OdString text, OdString store, OdString digest);

    OdString text_;
    OdString store_;
    OdString digest_;
};

/// Whether `check` would take the URL; quicker, for tens of thousands of them.
bool isCheckedUrl(const OdString& url);

/// The digest in a URL; empty for a text that is none.
OdString digestOfUrl(const OdString& url);

/// Whether a drawing store can have the name.
bool isStoreName(const OdString& name);

OdString objectUrl(const OdString& digest);
OdString drawingUrl(const OdString& store, const OdString& digest);

}  // namespace qrv
