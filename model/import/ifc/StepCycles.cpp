#include "model/import/ifc/StepCycles.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace ZVSmartModel {

namespace {

/// `#number` in the text.
struct Mention {
    std::uint64_t number = 0;
    std::size_t begin = 0, end = 0;
    bool defines = false;  ///< an equals sign follows
};

/// Finds the mentions of entities one after the other, outside strings and comments.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : text(text) {}

    bool Next(Mention& mention) {
        for (; at < text.size(); ++at) {
            if (text[at] == '\'') {
                at = std::min(text.find('\'', at + 1), text.size() - 1);
            } else if (text[at] == '/' && text.substr(at, 2) == "/*") {
                at = std::min(text.find("*/", at + 2), text.size() - 2) + 1;
            } else if (text[at] == '#' && Take(mention)) {
                return true;
            }
        }
        return false;
    }

  private:
    bool Take(Mention& mention) {
        mention = {0, at, at + 1, false};
        constexpr std::uint64_t most = std::uint64_t{1} << 40;
        for (; mention.end < text.size() && IsDigit(text[mention.end]); ++mention.end) {
            if (mention.number > most) return false;
            mention.number =
                mention.number * 10 + static_cast<unsigned char>(text[mention.end] - '0');
        }
        if (mention.end == at + 1) return false;
        at = mention.end;
        const std::size_t next = text.find_first_not_of(" \t\r\n", at);
        mention.defines = next != std::string_view::npos && text[next] == '=';
        return true;
    }
    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

    std::string_view text;
    std::size_t at = 0;
};

/// A cycle has a reference to its own or a later number somewhere.
bool MayHaveCycles(std::string_view text) {
    Scanner scanner(text);
    Mention mention;
    std::uint64_t current = 0;
    bool inEntity = false;
    while (scanner.Next(mention)) {
        if (mention.defines) {
            current = mention.number;
            inEntity = true;
        } else if (inEntity && mention.number >= current) {
            return true;
        }
    }
    return false;
}

/// The entities of a file by the order of their numbers, and where each refers to.
class Graph {
  public:
    explicit Graph(std::string_view text) {
        Scanner scanner(text);
        Mention mention;
        while (scanner.Next(mention)) {
            if (mention.defines) {
                entities.push_back({mention.number, references.size(), references.size()});
            } else if (!entities.empty()) {
                references.push_back({mention.number, mention.begin});
                entities.back().end = references.size();
            }
        }
        // Of a number that is defined twice the first definition counts.
        std::stable_sort(entities.begin(), entities.end(),
                         [](const Entity& a, const Entity& b) { return a.number < b.number; });
    }

    /// Tells of each reference that closes a cycle, as it is met going down from every entity. By
    /// a loop, for files may nest deeper than the stack is.
    template <typename Tell>
    void FindCycles(const Tell& tell) {
        for (std::size_t i = 0; i < entities.size(); ++i) Descend(i, tell);
    }

  private:
    struct Entity {
        std::uint64_t number;
        std::size_t next, end;  ///< its references that are still to be followed
        enum : char { Unseen, Above, Done } state = Unseen;
    };
    struct Reference {
        std::uint64_t number;
        std::size_t place;
    };

    template <typename Tell>
    void Descend(std::size_t root, const Tell& tell) {
        if (entities[root].state != Entity::Unseen) return;
        std::vector<std::size_t> path = {root};
        entities[root].state = Entity::Above;
        while (!path.empty()) {
            Entity& entity = entities[path.back()];
            if (entity.next == entity.end) {
                entity.state = Entity::Done;
                path.pop_back();
                continue;
            }
            const Reference& reference = references[entity.next++];
            const auto target = std::lower_bound(
                entities.begin(), entities.end(), reference.number,
                [](const Entity& e, std::uint64_t number) { return e.number < number; });
            if (target == entities.end() || target->number != reference.number) continue;
            if (target->state == Entity::Above) tell(entity.number, reference);
            if (target->state != Entity::Unseen) continue;
            target->state = Entity::Above;
            path.push_back(static_cast<std::size_t>(target - entities.begin()));
        }
    }

    std::vector<Entity> entities;
    std::vector<Reference> references;
};

}  // namespace

void CutStepCycles(std::string& bytes, const ImportReport& report) {
    if (!MayHaveCycles(bytes)) return;
    Graph(bytes).FindCycles([&](std::uint64_t from, const auto& reference) {
        const std::string to = '#' + std::to_string(reference.number);
        report.warn('#' + std::to_string(from) + ": the reference to " + to +
                    " leads back to where it comes from and is left out");
        std::size_t at = reference.place;
        bytes[at] = '$';
        for (++at; at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '9'; ++at) bytes[at] = ' ';
    });
}

}  // namespace ZVSmartModel
