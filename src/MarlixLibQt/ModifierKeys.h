#pragma once

// The library's watch on the keyboard modifiers, behind LibQt::addModifierKeysObserver.
namespace Marlix::LibQt {

/// Starts feeding the modifier observers from the running GUI application's input.
void installModifierTracking();
void removeModifierTracking(); ///< Stops the feed; harmless when it is not installed.

} // namespace Marlix::LibQt
