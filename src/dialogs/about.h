// The About box. Event-loop thread only.
#pragma once

namespace dorn {

/// Opens it, or brings it to the front. 0.
int help_about();

}  // namespace dorn
