#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/io/IDeserializer.h>
#include <MarlixLib/io/ISerializer.h>

#include <cstddef>
#include <cstdint>

namespace Marlix {

/// Saves a scene (its entities with their property values and the references between them) and loads it back.
///
/// A stream holds the classes and identities of all entities first, then their values, then a checksum of everything
/// written, so a reader resolves references to entities that come later and notices damage that still decodes. A load
/// reads into a staging area and replaces the scene's content only when the whole stream was read: any error leaves the
/// scene exactly as it was. Loading is not an undo step. Entity classes are looked up in the TypeDatabase by name.
/// References that form a loop are refused both ways: such a scene is neither saved nor loaded.
class MARLIXLIB_EXPORT SceneSerializer
{
public:
    /// Streams of every earlier version load too.
    static constexpr std::uint32_t FORMAT_VERSION = 2;

    /// An Exception, before anything is written, when the references of the scene's entities form a loop.
    static void save(const EntityGraphTracker& scene, ISerializer& out);
    /// The entities of a stream, new identities given, references resolved among them. Nothing else changes.
    static Expected<Array<EntityHolder<Entity>>, String> read(IDeserializer& in);
    /// Replaces the scene's entities with those of the stream; on any error the scene is left exactly as it was.
    static Expected<void, String> load(EntityGraphTracker& scene, IDeserializer& in);

    /// The scene as CBOR bytes; an Exception when its references form a loop.
    static Array<std::byte> saveToBytes(const EntityGraphTracker& scene);
    /// read() of CBOR bytes that saveToBytes() wrote.
    static Expected<Array<EntityHolder<Entity>>, String> readFromBytes(ArrayView<const std::byte> bytes);
    /// load() of CBOR bytes that saveToBytes() wrote.
    static Expected<void, String> loadFromBytes(EntityGraphTracker& scene, ArrayView<const std::byte> bytes);
};

} // namespace Marlix
