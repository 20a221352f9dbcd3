#include "Picture.h"

#include "Bar.h"
#include <array>
#include <cstdio>
#include <string>

namespace PciAgent {

namespace {

constexpr unsigned nameWidth = 11;
constexpr unsigned cellWidth = 22;
constexpr unsigned boxWidth = 20;

std::string padded(std::string text, unsigned width) {
    text.resize(width, ' ');
    return text;
}

std::string boxed(const std::string& text) { return padded("| " + text, boxWidth - 1) + "|"; }

const char* found(Fate inFlight) {
    static constexpr std::array texts = {"",
                                         "in flight: absent",
                                         "in flight: key only",
                                         "in flight: old value",
                                         "in flight: same value",
                                         "in flight: new value",
                                         "in flight: torn"};
    return texts.at(static_cast<std::size_t>(inFlight));
}

} // namespace

void printPicture(const std::vector<Life>& lives) {
    // A row has its name on the left and then a cell for each life. `next` is the life that looked
    // at what this one left; the last life has none.
    const auto row = [&](const char* name, auto cell) {
        std::string line = padded(name, nameWidth);
        for (std::size_t i = 0; i < lives.size(); ++i)
            line +=
                padded(cell(lives[i], i + 1 < lives.size() ? &lives[i + 1] : nullptr), cellWidth);
        std::printf("%s\n", line.substr(0, line.find_last_not_of(' ') + 1).c_str());
    };
    using Next = const Life*;
    const auto isFirst = [&](const Life& life) { return &life == lives.data(); };

    row("",
        [&](const Life& life, Next) { return "life " + std::to_string(&life - lives.data() + 1); });
    row("", [](const Life&, Next) { return "+" + std::string(boxWidth - 2, '-') + "+"; });
    row("processes", [](const Life& life, Next) {
        return boxed("process " + std::to_string(life.found.process));
    });
    row("", [&](const Life& life, Next) {
        return boxed(isFirst(life) ? "finds nothing" : "finds " + std::to_string(life.found.found));
    });
    row("", [](const Life& life, Next) { return boxed(std::to_string(life.writes) + " writes"); });
    row("", [](const Life&, Next next) {
        return next != nullptr ? "+XXXXX SIGKILL XXXX+" : "+-- ends by itself -+";
    });
    row("", [&](const Life& life, Next) {
        return isFirst(life) ? "            | writes" : "  ^ finds   | writes";
    });
    row("",
        [&](const Life& life, Next) { return isFirst(life) ? "            v" : "  |         v"; });
    std::printf("%s%s\n", padded("memory", nameWidth).c_str(),
                std::string(cellWidth * (lives.size() - 1) + boxWidth, '=').c_str());
    row("", [](const Life& life, Next) {
        return bar(life.entriesLeft, life.found.registers, boxWidth);
    });
    row("entries", [](const Life& life, Next) {
        return std::to_string(life.entriesLeft) + " of " + std::to_string(life.found.registers);
    });
    row("round", [](const Life& life, Next) { return std::to_string(life.round); });
    std::printf("\n");
    row("kill hit", [](const Life& life, Next next) {
        if (next == nullptr) return "";
        return life.entriesLeft < life.found.registers ? "the first fill," : "the rewriting,";
    });
    row("", [](const Life&, Next next) {
        if (next == nullptr) return "";
        return next->found.inFlight == Fate::none ? "between two writes" : "within a write";
    });
    row("next found", [](const Life&, Next next) {
        return next == nullptr ? "" : std::to_string(next->found.equal) + " as written";
    });
    row("",
        [](const Life&, Next next) { return next == nullptr ? "" : found(next->found.inFlight); });
    row("lost", [](const Life&, Next next) {
        return next == nullptr ? "" : std::to_string(next->found.completed - next->found.equal);
    });
}

} // namespace PciAgent
