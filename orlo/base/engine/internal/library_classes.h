// Tells the blocks of this library's own classes from the blocks of classes that plug-ins and
// hosts add.
//
// After a load, the scene's blocks get UpdateDataTable and PostLoad once for every path that
// reaches them, and a plug-in's class may count those calls. The library's own classes are
// known to gain nothing from the repeats: none of them has a PostLoad of its own (Block's does
// nothing), and their UpdateDataTable adds to the block's own table only the parameters it
// lacks. A scene made of them alone ends the same with one refresh per block and no post-load
// calls, so the reader spares itself the per-path walks there.
#pragma once

#include <optional>
#include <vector>

namespace Orlo {

class Block;

namespace internal {

// Whether `block` is of one of the library's own classes exactly: a class derived from one of
// them is a host's, whose calls count. A false answer costs only speed.
bool IsOfLibraryClass(const Block& block);

// When every block of `blocks` is of one of the library's own classes, the blocks among them
// whose UpdateDataTable does something, in the order of `blocks`; nothing otherwise.
std::optional<std::vector<Block*>> TableRefreshersIfAllOfLibraryClasses(
    const std::vector<Block*>& blocks);

}  // namespace internal
}  // namespace Orlo
