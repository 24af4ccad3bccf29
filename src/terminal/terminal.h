// terminal/terminal.h - the person's side of the program: screen, keyboard, line editor.
//
//   screen     what the terminal can do, by its description; its size; its modes
//   lineedit   a line, edited; pastes, breaks, new window sizes while it is typed
//   history    the lines of this session and of earlier ones
//   complete   what Tab may put
//
// Lower floors know none of this. They own hooks (kb_terminal of interp/keyboard.h, the strings
// of output/oml.h, progress_ready of core/progress.h) which terminal_init and the opening of
// the terminal fill. In batch and with piped input nothing here is ever opened.
#pragma once

void terminal_init(); // fills kb_terminal; touches no terminal
