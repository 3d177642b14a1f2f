// The dialogs that edit the association table. Event-loop thread only.
#pragma once

namespace dorn {

/// Opens the list dialog ("Associate"), or brings it to the front. 0.
int em_edit_associations();

}  // namespace dorn
