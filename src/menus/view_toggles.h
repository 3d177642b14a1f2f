// The View menu's toggles, and where the line above the status pane lies. Event-loop thread only.
// All functions return 0.
#pragma once

namespace dorn {

/// Shows or hides the hotlist pane; the configuration record and the button "tb_hotlist" follow.
int vm_hotlist_toggle();
/// Shows or hides the clipboard toolbar; nothing is stored.
int vm_clip_tb_toggle();

// Entries of the menu that change nothing.
int vm_nav_tb_toggle();
int vm_misc_tb_toggle();
int vm_hotlist_tb_toggle();
int vm_path_tb_toggle();
int vm_filter_tb_toggle();
int vm_icon_toggle();
int vm_status_toggle();
int vm_text_and_images();
int vm_text_only();
int vm_images_only();

/// Registers all of the above.
void view_toggles_register();

// Called whenever the workspace is laid out; the toolkit's layouts leave nothing to do for three.
int adjust_menu_tbg();
int adjust_main_tbg();
int adjust_workspace();
/// Moves "bottom_tbg" to just above the status pane, from "left_tbg" to "right_tbg", whose edges it
/// overlaps.
int adjust_bottom_tbg();

/// Keeps these up to date from here on.
void view_layout_setup();

}  // namespace dorn
