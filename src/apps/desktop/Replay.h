#pragma once
// Replayed desktop sessions: `halvane-desktop --replay FILE`.
//
// A script is a user's session written down, one action a line; blank lines
// and lines starting with "#" are left out. CONTROL is PAGE.NAME, with an
// element of a control array written NAME(i); PAGE.Caption is the page's
// caption.
//
//   command CLASSNAME            OnClick of the component's command of that class
//   click CONTROL                a click on a button, option button or other element
//   type CONTROL TEXT            the box's text becomes TEXT, as typed
//   pick CONTROL TEXT            the list entry TEXT becomes the combo box's text
//   cell CONTROL ROW COL         the grid's current cell becomes (ROW, COL), then a click
//   key CONTROL KEY              Enter, Left, Up, Right, Down or Delete in the control
//   answer question Yes|No       the answer of the next question box
//   answer folder|raster|open|save PATH
//                                the answer of the next browse or file dialog of that kind
//   answer cancel                Cancel for the next browse or file dialog
//   get CONTROL                  the control's state
//   get session.NAME             a session variable
//   get shown                    the pages on the screen
//
// What happens is written as it happens, one JSON object a line:
//   {"event":"message","kind":"stop"|"notice"|"question","title":T,"text":X,"answer":"OK"|"Yes"|"No"}
//   {"event":"report","text":X}                         a failure report
//   {"event":"load"|"show"|"hide"|"unload","page":P}
//   {"event":"unanswered","kind":K}                    a dialog with no answer
//                                                      queued; it gets Cancel or No
//   {"event":"help","topic":T}                          a help topic opened
//   {"event":"ignored","control":C,"why":W}             a click or key the user
//                                                      could not give (page not
//                                                      shown, control hidden or disabled)
//   {"event":"value","name":C,"text":X,"visible":B,"enabled":B[,"checked":B]}
//   {"event":"value","name":"session.N","text":X}
//   {"event":"shown","pages":[...]}

#include <iosfwd>
#include <string>

namespace halvane::desktop {

class MainWindow;

// Exit status of a replay: the script ran to its end, or a line of it named
// an action, page or control that does not exist (one line on `errors`).
inline constexpr int kReplayDone = 0;
inline constexpr int kReplayBadScript = 2;

// Runs the script `file` against `window`, whose component is loaded, with
// the pages answered by the script instead of a person.
int RunReplay(const std::string& file, MainWindow& window, std::ostream& out, std::ostream& errors);

}  // namespace halvane::desktop
