#include "platform/xdg/desktop_entry.h"

#include <cctype>
#include <map>
#include <optional>

namespace corvetta {

namespace {

constexpr std::string_view kMainGroup = "Desktop Entry";
constexpr std::string_view kActionGroupPrefix = "Desktop Action ";

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

// The escapes of string values: \s \n \t \r \\. An unknown escape keeps its backslash, so `\;`
// survives for the list splitting that follows and `\$` for the Exec quoting.
std::string unescaped(std::string_view value) {
    std::string result;
    for (std::size_t index = 0; index < value.size(); ++index) {
        if (value[index] != '\\' || index + 1 == value.size()) {
            result += value[index];
            continue;
        }
        switch (const char next = value[++index]) {
            case 's':
                result += ' ';
                break;
            case 'n':
                result += '\n';
                break;
            case 't':
                result += '\t';
                break;
            case 'r':
                result += '\r';
                break;
            case '\\':
                result += '\\';
                break;
            default:
                result += '\\';
                result += next;
        }
    }
    return result;
}

// A list value ("a;b;c;"): split at unescaped semicolons, empty items left out.
std::vector<std::string> listItems(std::string_view value) {
    std::vector<std::string> items;
    std::string item;
    for (std::size_t index = 0; index < value.size(); ++index) {
        if (value[index] == '\\' && index + 1 < value.size() && value[index + 1] == ';') {
            item += ';';
            ++index;
        } else if (value[index] == ';') {
            if (!item.empty()) {
                items.push_back(unescaped(item));
            }
            item.clear();
        } else {
            item += value[index];
        }
    }
    if (!item.empty()) {
        items.push_back(unescaped(item));
    }
    return items;
}

// A target as a path: an absolute path as it is, a "file://" link without its scheme and host,
// percent escapes decoded; none for anything else.
std::optional<std::string> targetPath(std::string_view target) {
    if (target.starts_with('/')) {
        return std::string(target);
    }
    constexpr std::string_view kFileScheme = "file://";
    if (!target.starts_with(kFileScheme)) {
        return std::nullopt;
    }
    const auto rest = target.substr(kFileScheme.size());
    const auto slash = rest.find('/');
    const auto host = rest.substr(0, slash);
    if (slash == std::string_view::npos || (!host.empty() && host != "localhost")) {
        return std::nullopt;
    }
    std::string path;
    for (std::size_t index = slash; index < rest.size(); ++index) {
        const auto hex = [&](std::size_t at) {
            return std::isxdigit(static_cast<unsigned char>(rest[at]));
        };
        if (rest[index] == '%' && index + 2 < rest.size() && hex(index + 1) && hex(index + 2)) {
            path +=
                static_cast<char>(std::stoi(std::string(rest.substr(index + 1, 2)), nullptr, 16));
            index += 2;
        } else {
            path += rest[index];
        }
    }
    return path;
}

// The targets as %f %F %u %U hand them over.
Expected<std::vector<std::string>, std::string> expandedTargets(
    char code, const std::vector<std::string>& targets) {
    const bool asFiles = code == 'f' || code == 'F';
    const std::size_t count = code == 'f' || code == 'u' ? 1 : targets.size();
    std::vector<std::string> expanded;
    for (std::size_t index = 0; index < count; ++index) {
        if (!asFiles) {
            expanded.push_back(targets[index]);
        } else if (auto path = targetPath(targets[index])) {
            expanded.push_back(std::move(*path));
        } else {
            return unexpected("'" + targets[index] +
                              "' is not a file, and the application takes files only");
        }
    }
    return expanded;
}

using Group = std::map<std::string, std::string, std::less<>>;

std::string valueOf(const Group& group, std::string_view key) {
    const auto found = group.find(key);
    return found == group.end() ? std::string() : unescaped(found->second);
}

}  // namespace

Expected<DesktopEntry, std::string> parseDesktopEntry(std::string_view text) {
    if (text.size() > kMaxDesktopEntrySize) {
        return unexpected("larger than " + std::to_string(kMaxDesktopEntrySize) + " bytes");
    }
    std::map<std::string, Group, std::less<>> groups;
    std::optional<std::string> current;
    std::size_t lineNumber = 0;
    while (!text.empty()) {
        ++lineNumber;
        const auto end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        const std::string_view content = trimmed(line);
        if (content.empty() || content.starts_with('#')) {
            continue;
        }
        const std::string where = "line " + std::to_string(lineNumber);
        if (content.starts_with('[')) {
            if (!content.ends_with(']') || content.size() < 3) {
                return unexpected(where + ": a group header must be [Name]");
            }
            current = std::string(content.substr(1, content.size() - 2));
            if (groups.empty() && *current != kMainGroup) {
                return unexpected(where + ": the first group must be [Desktop Entry]");
            }
            groups.try_emplace(*current);
            continue;
        }
        const auto equals = content.find('=');
        if (equals == std::string_view::npos || trimmed(content.substr(0, equals)).empty()) {
            return unexpected(where + ": expected Key=Value");
        }
        if (!current) {
            return unexpected(where + ": a key before the [Desktop Entry] group");
        }
        const std::string_view key = trimmed(content.substr(0, equals));
        if (key.find('[') != std::string_view::npos) {
            continue;
        }
        groups[*current].try_emplace(std::string(key),
                                     std::string(trimmed(content.substr(equals + 1))));
    }
    const auto main = groups.find(kMainGroup);
    if (main == groups.end()) {
        return unexpected(std::string("no [Desktop Entry] group"));
    }
    const Group& entryGroup = main->second;
    DesktopEntry entry;
    entry.type = valueOf(entryGroup, "Type");
    entry.name = valueOf(entryGroup, "Name");
    entry.icon = valueOf(entryGroup, "Icon");
    entry.exec = valueOf(entryGroup, "Exec");
    entry.tryExec = valueOf(entryGroup, "TryExec");
    entry.startupWMClass = valueOf(entryGroup, "StartupWMClass");
    entry.hidden = valueOf(entryGroup, "Hidden") == "true";
    const auto actions = entryGroup.find("Actions");
    for (const auto& identifier :
         listItems(actions == entryGroup.end() ? std::string_view() : actions->second)) {
        const auto group = groups.find(std::string(kActionGroupPrefix) + identifier);
        if (group != groups.end()) {
            entry.actions.push_back(
                {identifier, valueOf(group->second, "Name"), valueOf(group->second, "Exec")});
        }
    }
    return entry;
}

Expected<std::vector<std::string>, std::string> parseExecLine(std::string_view exec,
                                                              const ExecContext& context) {
    const std::string text = unescaped(exec);
    std::vector<std::string> arguments;
    std::string word;
    // Whether the word so far came from anything (a quote counts, so "" is an empty argument),
    // and whether a dropped field code was all of it.
    bool hasWord = false;
    bool onlyDropped = false;
    bool usedTargets = false;
    auto finishWord = [&] {
        if (hasWord && !(onlyDropped && word.empty())) {
            arguments.push_back(word);
        }
        word.clear();
        hasWord = false;
        onlyDropped = false;
    };
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char c = text[index];
        if (c == ' ' || c == '\t' || c == '\n') {
            finishWord();
        } else if (c == '"') {
            hasWord = true;
            onlyDropped = false;
            for (++index;; ++index) {
                if (index >= text.size()) {
                    return unexpected(std::string("unterminated quote in Exec"));
                }
                if (text[index] == '"') {
                    break;
                }
                if (text[index] == '\\' && index + 1 < text.size()) {
                    ++index;
                }
                word += text[index];
            }
        } else if (c == '%') {
            if (index + 1 >= text.size()) {
                return unexpected(std::string("a lone % at the end of Exec"));
            }
            const char code = text[++index];
            switch (code) {
                case '%':
                    word += '%';
                    onlyDropped = false;
                    break;
                case 'f':
                case 'F':
                case 'u':
                case 'U':
                    if (!context.targets.empty()) {
                        auto expanded = expandedTargets(code, context.targets);
                        if (!expanded) {
                            return unexpected(expanded.error());
                        }
                        usedTargets = true;
                        if (code == 'f' || code == 'u') {
                            word += expanded->front();
                            onlyDropped = false;
                            break;
                        }
                        // A list takes one argument each, after what stood before it.
                        if (hasWord && !word.empty()) {
                            arguments.push_back(word);
                        }
                        word.clear();
                        arguments.insert(arguments.end(), expanded->begin(), expanded->end());
                        hasWord = false;
                        onlyDropped = false;
                        continue;
                    }
                    onlyDropped = !hasWord || onlyDropped;
                    break;
                case 'd':
                case 'D':
                case 'n':
                case 'N':
                case 'v':
                case 'm':
                    onlyDropped = !hasWord || onlyDropped;
                    break;
                case 'i':
                    if (!hasWord && !context.icon.empty()) {
                        arguments.emplace_back("--icon");
                        word += context.icon;
                    } else {
                        onlyDropped = !hasWord || onlyDropped;
                    }
                    break;
                case 'c':
                    word += context.name;
                    onlyDropped = false;
                    break;
                case 'k':
                    word += context.location;
                    onlyDropped = false;
                    break;
                default:
                    return unexpected(std::string("unknown field code %") + code + " in Exec");
            }
            hasWord = true;
        } else {
            word += c;
            hasWord = true;
            onlyDropped = false;
        }
    }
    finishWord();
    if (arguments.empty() || arguments.front().empty()) {
        return unexpected(std::string("Exec names no program"));
    }
    if (!context.targets.empty() && !usedTargets) {
        return unexpected(std::string("Exec takes no files or links"));
    }
    return arguments;
}

}  // namespace corvetta
