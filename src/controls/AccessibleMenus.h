#pragma once

/// Puts open menus into the tree that a screen reader walks. Qt leaves pop-ups out of it: a menu is a window of its
/// own, but none of the windows that it lists. From now on a menu that is on the screen is a child of the widget that
/// it was made for, and the forms of a MenuDialog are children of that.
///
/// Call it once, before the first widget is made known to a screen reader; more calls do nothing. Main thread.
void installAccessibleMenus();
