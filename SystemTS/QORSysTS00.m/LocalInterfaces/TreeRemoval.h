/// @file
/// Emptying a directory without ever leaving it.
#pragma once

namespace VEL::internal {

/// The status of a call that removes a directory, which answered `result`.
int StatusOfRemovedDirectory(int result);

/// Removes what stands in a directory.
///
/// The directory itself is opened by its name; from there the way goes from descriptor to descriptor and never through
/// a symbolic link, so that nothing is listed or removed that did not stand in the tree, whatever others do to it
/// meanwhile. A directory that others move out of the tree while it is being emptied may still be emptied: it is known
/// by its descriptor. A link is removed itself. At any depth a few descriptors and no more than one frame are in use.
/// @param name         Native text.
/// @param isRecursive  Whether directories in it are removed too, links to directories with them; otherwise they stay.
/// @return 0, or the first failure, which ends the removal.
int EmptyDirectory(const char* name, bool isRecursive);

} // namespace VEL::internal
