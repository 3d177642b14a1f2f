// The look where the toolkit's own style leaves texts or controls hard to read.
#pragma once

namespace dorn {

/// Fusion where the desktop brings no style, and over Fusion, or any style where the layout runs
/// from right to left, what makes it readable:
///  - in a dark palette controls have an outline between the background's and the text's colour,
///    where Fusion's is darker than the background, and so unseen on black; a disabled menu entry
///    has no shadow;
///  - a menu that is longer than the screen scrolls, where Fusion's goes on in columns beyond it;
///  - from right to left every text keeps its own direction (the colon of "Path:" and the slash of
///    "/home" stay where they belong), labels are aligned to the right, and a progress bar's
///    percentage has the colour of text.
/// Call it with the application object and the layout's direction there, before any widget.
void ui_setup_style();

}  // namespace dorn
