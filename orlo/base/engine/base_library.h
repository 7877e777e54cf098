// Declares RegisterBaseLibrary, which registers a factory for every block class of Orlo.
#pragma once

namespace Orlo {

// Registers, in a fixed order, one factory for each block class this library defines.
// Call it once, before any scene work; a second call registers nothing new.
void RegisterBaseLibrary();

}  // namespace Orlo
