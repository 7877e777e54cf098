#include <orlo/support/state_container.h>

namespace Orlo {

StateContainer::~StateContainer() = default;

void StateContainer::OnAccept() {}

}  // namespace Orlo
