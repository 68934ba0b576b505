#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Polymorphic.h>
#include <MarlixLib/color/RgbBytes.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/image/BitmapImpl.h>

namespace Marlix {

/// Renders small preview images of entities for the thumbnail cache.
///
/// It is called on the cache's render thread, one entity at a time, and may take long. The entity is shared with the
/// thread that owns the scene, so a provider reads what it needs and never changes the entity.
class MARLIXLIB_EXPORT IThumbnailProvider : public Polymorphic
{
public:
    using Bitmap = BitmapImpl<RgbaBytes>; ///< Rows of 8-bit RGBA pixels, top row first.

    /// The entity drawn into a bitmap of exactly `width` x `height` pixels (straight alpha). An empty bitmap means the
    /// entity has no picture; an exception means rendering failed, and the entity is not tried again until it changes.
    virtual Bitmap renderThumbnail(const EntityHolder<Entity>& entity, int width, int height) = 0;
};

} // namespace Marlix
