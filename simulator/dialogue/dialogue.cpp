#include "dialogue/dialogue.h"

#include "scpi/headerpattern.h"

#include <unordered_map>
#include <utility>

namespace scnsim {

namespace {

/// What a header resolves to: one of the two.
struct Entry
{
    const CommandRow* command;
    const OptionHeader* option;
};

using HeaderTable = std::unordered_map<std::string, Entry>;

/// All spellings of all headers.
HeaderTable makeHeaderTable()
{
    HeaderTable table;
    const auto add = [&table](const char* spelling, Entry entry) {
        for (std::string& header : HeaderPattern(spelling).spellings()) {
            table.emplace(std::move(header), entry);
        }
    };
    for (const Facts<CommandRow> commands :
         {commonCommands(), systemCommands(), channelCommands(), scanCommands()}) {
        for (const CommandRow& row : commands) {
            add(row.spelling, {&row, nullptr});
        }
    }
    for (const OptionHeader& row : optionHeaders()) {
        add(row.spelling, {nullptr, &row});
    }
    return table;
}

const Entry* lookUp(const std::vector<std::string>& header)
{
    static const HeaderTable table = makeHeaderTable();
    const auto found = table.find(joinedHeader(header));
    return found == table.end() ? nullptr : &found->second;
}

/// A header continues in the branch of the one before it on the line; if it is not found there, it
/// is looked up from the root, which spares clients the leading colon. Common commands leave the
/// branch unchanged.
const Entry* find(const MessageUnit& unit, std::vector<std::string>& path)
{
    const bool common = unit.header.front().front() == '*';
    if (!common && !unit.rooted && !path.empty()) {
        std::vector<std::string> continued = path;
        continued.insert(continued.end(), unit.header.begin(), unit.header.end());
        if (const Entry* const entry = lookUp(continued)) {
            continued.pop_back();
            path = std::move(continued);
            return entry;
        }
    }
    const Entry* const entry = lookUp(unit.header);
    if (entry != nullptr && !common) {
        path.assign(unit.header.begin(), unit.header.end() - 1);
    }
    return entry;
}

} // namespace

Dialogue::Dialogue(Instrument& instrument, std::string identity)
    : m_instrument(instrument)
    , m_identity(std::move(identity))
{
}

std::string Dialogue::handle(std::string_view line, Instant now)
{
    advance(now);
    std::string reply;
    // Branch of the command tree in which the next header without a leading colon starts.
    std::vector<std::string> path;
    bool answered = false;
    for (const MessageUnit& unit : parseMessage(line)) {
        CommandResult outcome = carryOut(unit, path, now);
        if (outcome.error != ErrorCode::None) {
            report(outcome.error);
        } else if (outcome.answer) {
            reply += (answered ? ";" : "") + *outcome.answer;
            answered = true;
        }
    }
    return reply;
}

void Dialogue::advance(Instant now)
{
    m_instrument.advance(now);
    if (m_instrument.memory().takeLossNotice()) {
        report(ErrorCode::OutOfMemory);
    }
}

void Dialogue::report(ErrorCode error)
{
    m_errors.push(error);
    m_status.eventStatus |= errorEventBit(error);
}

CommandResult Dialogue::carryOut(const MessageUnit& unit, std::vector<std::string>& path,
                                 Instant now)
{
    if (unit.error != ErrorCode::None) {
        return refuse(unit.error);
    }
    const Entry* const entry = find(unit, path);
    if (entry == nullptr) {
        return refuse(ErrorCode::UndefinedHeader);
    }
    CommandContext context{m_instrument, m_errors, m_status, m_identity, now};
    Arguments arguments(unit.parameters);
    if (entry->option != nullptr) {
        const Option option = entry->option->option;
        return unit.query ? queryOption(context, arguments, option)
                          : setOption(context, arguments, option);
    }
    const Handler handler = unit.query ? entry->command->query : entry->command->command;
    return handler != nullptr ? handler(context, arguments) : refuse(ErrorCode::UndefinedHeader);
}

} // namespace scnsim
