#include "dialogue/dialogue.h"

#include <utility>

namespace scnsim {

Dialogue::Dialogue(Instrument& instrument, std::string identity)
    : m_instrument(instrument)
    , m_identity(std::move(identity))
{
    for (const Facts<CommandRow> table :
         {commonCommands(), systemCommands(), channelCommands(), scanCommands()}) {
        for (const CommandRow& row : table) {
            m_entries.push_back({HeaderPattern(row.spelling), &row, nullptr});
        }
    }
    for (const OptionRow& row : optionHeaders()) {
        m_entries.push_back({HeaderPattern(row.spelling), nullptr, &row});
    }
}

std::string Dialogue::handle(std::string_view line, Instant now)
{
    advance(now);
    std::string reply;
    // Where the next header without a leading colon starts in the command tree.
    std::vector<std::string> path;
    bool answered = false;
    for (const MessageUnit& unit : parseMessage(line)) {
        Outcome outcome = carryOut(unit, path, now);
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

Outcome Dialogue::carryOut(const MessageUnit& unit, std::vector<std::string>& path, Instant now)
{
    if (unit.error != ErrorCode::None) {
        return refuse(unit.error);
    }
    const Entry* const entry = find(unit, path);
    if (entry == nullptr) {
        return refuse(ErrorCode::UndefinedHeader);
    }
    Session session{m_instrument, m_errors, m_status, m_identity, now};
    Arguments arguments(unit.parameters);
    if (entry->option != nullptr) {
        const Option option = entry->option->option;
        return unit.query ? queryOption(session, arguments, option)
                          : setOption(session, arguments, option);
    }
    const Handler handler = unit.query ? entry->command->query : entry->command->command;
    return handler != nullptr ? handler(session, arguments) : refuse(ErrorCode::UndefinedHeader);
}

/// A header continues in the branch of the one before it on the line; if it is not found there it
/// is looked for at the root, which spares clients the leading colon. Common commands leave the
/// branch as it is.
const Dialogue::Entry* Dialogue::find(const MessageUnit& unit, std::vector<std::string>& path) const
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

const Dialogue::Entry* Dialogue::lookUp(const std::vector<std::string>& header) const
{
    for (const Entry& entry : m_entries) {
        if (entry.pattern.matches(header)) {
            return &entry;
        }
    }
    return nullptr;
}

} // namespace scnsim
