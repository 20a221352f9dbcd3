// ferrolog-cat - prints a trace file: its messages, oldest first, and what it no longer holds.
//
//     ferrolog-cat [-n COUNT] FILE
//     ferrolog-cat --help | --version
//
// Exit status: 0 if the file could be read, with notes or without; 1 if not; 2 for wrong arguments.
#include <Ferrolog/Reader.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <getopt.h>
#include <optional>
#include <string_view>

namespace {

using Ferrolog::CallSite;
using Ferrolog::Message;
using Ferrolog::Reader;

constexpr const char* usageText = "usage: ferrolog-cat [-n COUNT] FILE\n";
constexpr const char* helpText =
    "usage: ferrolog-cat [-n COUNT] FILE\n"
    "\n"
    "Prints the trace FILE: its messages, oldest first, and what it no longer holds.\n"
    "The process that wrote it may be alive or dead, and of either word size.\n"
    "\n"
    "  -n COUNT   the last COUNT messages alone\n"
    "  --help     prints this\n"
    "  --version  prints the version\n"
    "\n"
    "Exit status: 0 if the file could be read, 1 if not, 2 for wrong arguments.\n";
constexpr const char* versionText = "ferrolog-cat " BRIXO_VERSION "\n";

struct Arguments {
    std::size_t count = static_cast<std::size_t>(-1);
    const char* path = nullptr;
    const char* answer = nullptr; // printed instead of a file
};

std::optional<Arguments> parse(int argc, char** argv) {
    static constexpr option longOptions[] = {
        {"help", no_argument, nullptr, 'h'}, {"version", no_argument, nullptr, 'v'}, {}};
    Arguments arguments;
    for (int option = 0; (option = ::getopt_long(argc, argv, "n:", longOptions, nullptr)) != -1;) {
        if (option == 'h' || option == 'v') {
            arguments.answer = option == 'h' ? helpText : versionText;
            return arguments;
        }
        if (option != 'n') return std::nullopt;
        const std::string_view text = optarg;
        const auto [end, error] =
            std::from_chars(text.data(), text.data() + text.size(), arguments.count);
        if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    }
    if (argc - optind != 1) return std::nullopt;
    arguments.path = argv[optind];
    return arguments;
}

// "2026-11-21 01:21:49.123456" in local time.
std::string timeText(std::uint64_t ns) {
    if (ns == 0) return "                time unknown";
    const auto seconds = static_cast<std::time_t>(ns / 1'000'000'000U);
    std::tm local{};
    char text[64] = "";
    if (::localtime_r(&seconds, &local) == nullptr ||
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local) == 0)
        return "                time unknown";
    char micro[16];
    std::snprintf(micro, sizeof micro, ".%06u", static_cast<unsigned>(ns % 1'000'000'000U / 1000));
    return std::string(text) + micro;
}

std::string counted(std::uint64_t count, const char* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

void printLife(const Reader& reader, std::uint32_t number) {
    const Ferrolog::Life* const life = reader.life(number);
    if (life == nullptr) {
        std::puts("-- a life that the file has forgotten");
        return;
    }
    std::printf("-- life %u: %s, pid %u, began %s\n", life->number,
                Reader::harmless(life->name).c_str(), life->pid, timeText(life->beganNs).c_str());
}

void printMessages(const Reader& reader, std::size_t count) {
    const auto& messages = reader.messages();
    const std::size_t first = messages.size() - std::min(count, messages.size());
    std::size_t width = 0;
    for (std::size_t i = first; i < messages.size(); ++i)
        width = std::max(width, reader.origin(reader.callSites()[messages[i].site]).size());
    width = std::min<std::size_t>(width, 40);
    std::uint32_t newestLife = 0;
    for (std::size_t i = first; i < messages.size(); ++i) {
        const Message& message = messages[i];
        // Once for each life, at its first message; a forked child writes between those of its
        // parent.
        if (message.life > newestLife || i == first) {
            newestLife = message.life;
            printLife(reader, message.life);
        }
        const Ferrolog::Life* const life = reader.life(message.life);
        std::printf(
            "%s  %7s  %-*s  %s\n", timeText(message.timeNs).c_str(),
            life == nullptr ? "?" : std::to_string(life->pid).c_str(), static_cast<int>(width),
            reader.origin(reader.callSites()[message.site]).c_str(), reader.text(message).c_str());
    }
}

void printSummary(const Reader& reader, std::size_t count) {
    const std::size_t present = reader.messages().size();
    std::printf("-- %s", counted(present, "message").c_str());
    if (count < present) std::printf(", the last %zu shown", count);
    std::printf(", %llu lost", static_cast<unsigned long long>(reader.lost()));
    if (reader.unfinished() > 0)
        std::printf(", %llu unfinished", static_cast<unsigned long long>(reader.unfinished()));
    std::putchar('\n');
    for (const CallSite& site : reader.callSites()) {
        if (site.lost == 0) continue;
        std::printf("--   %llu of %llu lost of %s\n", static_cast<unsigned long long>(site.lost),
                    0ULL + site.lost + site.present, reader.origin(site).c_str());
    }
    for (const std::string& note : reader.notes()) std::printf("-- note: %s\n", note.c_str());
}

// The exit status, once what was printed has arrived or not.
int finish() {
    if (std::ferror(stdout) == 0 && std::fflush(stdout) == 0) return 0;
    std::fputs("ferrolog-cat: cannot write to standard output\n", stderr);
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    const std::optional<Arguments> arguments = parse(argc, argv);
    if (!arguments) {
        std::fputs(usageText, stderr);
        return 2;
    }
    if (arguments->answer != nullptr) {
        std::fputs(arguments->answer, stdout);
        return finish();
    }
    const Reader reader{std::string(arguments->path)};
    if (!reader.error().empty()) {
        std::fprintf(stderr, "ferrolog-cat: %s: %s\n", Reader::harmless(arguments->path).c_str(),
                     reader.error().c_str());
        return 1;
    }
    printMessages(reader, arguments->count);
    printSummary(reader, arguments->count);
    return finish();
}
