#include "ctl/ctl_help.h"

namespace corvetta {

namespace {
struct MethodHelp {
    const char* name;
    const char* parameters;
    const char* summary;
};

// Brackets mark optional parameters.
constexpr MethodHelp kMethods[] = {
    {"snap_window", "position=NAME",
     "snap the frontmost window; NAME is one of leftHalf, rightHalf, topHalf, bottomHalf,\n"
     "fullscreen, center, leftThird, centerThird, rightThird, leftTwoThirds, centerTwoThirds,\n"
     "rightTwoThirds, topLeftQuarter, topRightQuarter, bottomLeftQuarter, bottomRightQuarter"},
    {"perform_action", "action=NAME [rect=[X,Y,W,H]]",
     "run any window action on the frontmost window, as its shortcut would (rect for \"custom\",\n"
     "in screen coordinates); also moveToNextDisplay and moveToPreviousDisplay"},
    {"list_windows", "", "the windows of every regular application"},
    {"list_displays", "", "the displays with their resolution and scale"},
    {"get_frontmost_window", "", "the focused window of the frontmost application"},
    {"get_logs", "[level=LEVEL] [limit=N] [category=TEXT] [service=TEXT] [search=TEXT]",
     "recent log entries; LEVEL is debug, info, warning or error"},
    {"open_app", "bundle_id=ID", "launch an application"},
    {"activate_app", "bundle_id=ID", "bring a running application to the front"},
    {"open_new_window", "bundle_id=ID", "ask an application for a new window and wait for it"},
    {"discover_new_window_shortcut", "bundle_id=ID", "find the menu item that opens a new window"},
    {"inspect_app_windows", "bundle_id=ID", "a diagnostic view of an application's windows"},
    {"close_app_windows", "bundle_id=ID", "close every window of an application"},
    {"list_layouts", "", "every layout template: panes as [x, y, width, height], space, shortcut"},
    {"save_layout", "name=NAME panes=[[X,Y,W,H],...] [description=TEXT]",
     "save a new global layout template; panes are fractions of the usable area, origin at\n"
     "its lower-left corner, in fill order"},
    {"apply_workspace_layout", "name=NAME",
     "place the front windows of the display under the pointer (or of every display) into a\n"
     "layout's panes; answers when they are placed, with how many"},
    {"layout_lock", "",
     "the active layout lock: its tiled windows with their frames, original frames,\n"
     "neighbours per edge and whether they drifted; \"active\": false when there is none"},
    {"layout_lock_reset", "", "put every tiled window back where the layout placed it"},
    {"layout_lock_untile", "", "end the layout lock, leaving the windows where they are"},
    {"list_workspaces", "", "the saved workspaces with their window counts and spaces"},
    {"get_workspace_layout", "name=NAME", "a workspace's windows and the displays saved with it"},
    {"capture_workspace", "name=NAME [bundle_ids=[ID,...]]",
     "save the windows on screen (and minimized ones) as a new workspace; a taken name is\n"
     "refused, not overwritten; bundle_ids keeps only those applications"},
    {"preview_capture", "[bundle_ids=[ID,...]]", "the windows a capture would save, nothing saved"},
    {"restore_workspace", "name=NAME",
     "put a workspace's windows back (launching missing applications, opening missing\n"
     "windows); answers when done, with how many windows were placed"},
    {"delete_workspace", "name=NAME", "delete a saved workspace"},
    {"rename_workspace", "name=NAME new_name=NAME", "rename a workspace within its space"},
    {"set_deeplink", "name=NAME bundle_id=ID window_index=N value=TEXT",
     "set what a saved window opens on restore: a link, a path, a terminal directory or a\n"
     "command; the workspace must hold window N (from 0) of that application"},
    {"remove_deeplink", "name=NAME bundle_id=ID window_index=N", "remove a window's deeplink"},
    {"list_spaces", "", "the spaces, the global space first, with the active one marked"},
    {"create_space", "name=NAME", "create a named space"},
    {"delete_space", "name=NAME", "delete a space; its workspaces move to the global space"},
    {"activate_space", "name=NAME", "make a space active; NAME Global is the global space"},
    {"list_shortcuts", "",
     "every shortcut name (actions, workspaces, spaces, layouts) with its combination and\n"
     "whether its hot key is live"},
    {"set_shortcut", "name=NAME (keyCode=N modifiers=MASK | clear=true)",
     "give a shortcut name a combination (MASK: Shift 131072, Control 262144, Option 524288,\n"
     "Command 1048576, added up) or clear it; a combination another name holds is refused"},
    {"export_setup", "path=ABSOLUTE_PATH",
     "write workspaces, spaces, layouts and settings to a file (into a folder as\n"
     "Corvetta_Backup_<date-time>.json)"},
    {"import_preview", "path=ABSOLUTE_PATH",
     "what importing a set-up file would add; nothing is written"},
    {"import_setup", "path=ABSOLUTE_PATH",
     "merge a set-up file in: taken names renamed, nothing existing overwritten"},
    {"get_status", "", "the status message, version and desktop"},
    {"sync", "", "answer once all work queued before it is done and the desktop has caught up"},
    {"simulate",
     "[displays=[...]] [sleep=true] [userFrame={...}] [mouse={...}] [modifiers=N]\n"
     "           [launch=ID] [quit=PID]",
     "simulated desktop only: make the changes a user or the system makes, in this order:\n"
     "new displays (the desktop file's format), a sleep and wake, a user's drag of a window\n"
     "({\"window\": N, \"frame\": [X,Y,W,H]} in accessibility space), a left mouse event\n"
     "({\"event\": \"down\"|\"drag\"|\"up\", \"location\": [X,Y]} in screen space), the modifier\n"
     "flags held, an installed application started, an application quit"},
};

std::string indented(const char* text, const std::string& indent) {
    std::string result = indent;
    for (const char* c = text; *c; ++c) {
        result += *c;
        if (*c == '\n') {
            result += indent;
        }
    }
    return result;
}
}  // namespace

std::string ctlUsageLine() {
    return "Usage: corvetta-ctl [OPTIONS] METHOD [KEY=VALUE ...]  (see corvetta-ctl --help)";
}

std::string ctlHelpText(const std::filesystem::path& defaultSocketPath) {
    std::string text =
        "Usage: corvetta-ctl [OPTIONS] METHOD [KEY=VALUE ...]\n"
        "       corvetta-ctl [OPTIONS] --raw REQUEST\n"
        "\n"
        "Sends one request to Corvetta's automation socket and prints the answer's result (for\n"
        "--raw, the whole answer): indented on a terminal, on one line otherwise. A VALUE is read\n"
        "as JSON when it is valid JSON (5, true, [1,2], \"text\"), as plain text otherwise.\n"
        "\n"
        "Options:\n"
        "  --socket PATH      the server's socket (default: " +
        defaultSocketPath.string() +
        ")\n"
        "  --timeout SECONDS  how long to wait for the answer (default: 30)\n"
        "  --raw REQUEST      send REQUEST, a JSON object with \"id\", \"method\" and \"params\"\n"
        "  -h, --help         show this text\n"
        "\n"
        "Exit status: 0 when the answer holds a result, 1 when it holds an error, 2 when no\n"
        "server answers, 64 when the command line is wrong.\n"
        "\n"
        "Methods:\n";
    for (const auto& method : kMethods) {
        text += "  " + std::string(method.name);
        if (*method.parameters) {
            text += " " + std::string(method.parameters);
        }
        text += "\n" + indented(method.summary, "      ") + "\n";
    }
    return text;
}

}  // namespace corvetta
