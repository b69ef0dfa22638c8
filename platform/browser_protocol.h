#pragma once

// The channel between Mirelo and the browser it hands the user over to.
//
// Mirelo listens on a local socket of a random name that only its own user may open, and
// starts the browser executable detached with "--channel <socket path>". The browser puts
// itself in a session of its own, connects, and from then on takes one request and gives one
// answer per step, each a JSON object on a line of its own (UTF-8, compact, so no line break
// inside). Mirelo sends the next request only after the answer to the last one.
//
//   {"step":"navigate","url":U}     start loading U                  {"ok":true}
//   {"step":"readyState"}           4 once the page has completed    {"ok":true,"readyState":N}
//   {"step":"script","script":S}    run S in the page's document     {"ok":true,"value":V}
//   {"step":"showMaximized"}        show the window maximised        {"ok":true}
//   {"step":"show"}                 make the window visible          {"ok":true}
//   {"step":"activate"}             bring the window to the front    {"ok":true}
//   {"step":"status"}               how the window stands            {"ok":true,"visible":B,
//                                                                     "maximized":B,
//                                                                     "offTheRecord":B}
//   anything else                                                    {"ok":false}
//
// The handover document, which carries the password, travels inside a script and nowhere
// else: never on the command line, in the environment, in a file or a log. Closing the
// channel lets the browser go: a window that was shown is the user's from then on and lives
// on whatever becomes of Mirelo; a browser that was never shown has nothing for anyone and
// ends.

namespace mirelo::platform::browser_protocol {

inline constexpr const char *ChannelOption = "--channel";

inline constexpr const char *Step = "step";
inline constexpr const char *Navigate = "navigate";
inline constexpr const char *ReadyState = "readyState";
inline constexpr const char *Script = "script";
inline constexpr const char *ShowMaximized = "showMaximized";
inline constexpr const char *Show = "show";
inline constexpr const char *Activate = "activate";
inline constexpr const char *Status = "status";

inline constexpr const char *Ok = "ok";
inline constexpr const char *Url = "url";
inline constexpr const char *Value = "value";
inline constexpr const char *Visible = "visible";
inline constexpr const char *Maximized = "maximized";
inline constexpr const char *OffTheRecord = "offTheRecord";

} // namespace mirelo::platform::browser_protocol
