#pragma once

#include "model/instrument.h"
#include "scpi/message.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace scnsim {

/// Takes and checks a command's parameters one after another. The first that does not fit sets the
/// error; everything taken after it is a default and must not be used. So a handler takes all it
/// needs, calls ok() once, and only then acts.
class Arguments
{
public:
    explicit Arguments(const std::vector<Parameter>& parameters)
        : m_parameters(parameters)
    {
    }

    /// A number between the limits, both included.
    double number(double minimum, double maximum);

    /// A number or, in its place, MINimum, MAXimum or DEFault.
    double number(double minimum, double maximum, double standard);

    /// A number of any size, or one of the three words; the caller checks the range.
    double numberOrLimit(double minimum, double maximum, double standard);

    /// A number between the limits, rounded to an integer.
    int integer(int minimum, int maximum);

    /// An integer between the limits, MINimum, MAXimum, or INFinity (that word, DEFault or 9.9E37).
    /// @return none for INFinity
    std::optional<int> countOrInfinity(int minimum, int maximum);

    /// ON, OFF or a number, which is on unless it rounds to 0.
    bool onOff();

    /// Index of the matching word; each may be given in short or long form.
    std::size_t word(Facts<const char*> words);

    /// A text in quotes, not longer than the limit.
    std::string text(std::size_t longest);

    /// A list of channels that exist, at least one.
    std::vector<int> channels(const Instrument& instrument);

    /// The same, possibly empty.
    std::vector<int> channelsOrNone(const Instrument& instrument);

    bool hasMore() const { return m_next < m_parameters.size(); }

    /// Whether all parameters fitted and none is left.
    bool ok();

    ErrorCode error() const { return m_error; }

private:
    const Parameter* take(Parameter::Type type);
    const Parameter* take();
    double within(double minimum, double maximum, double number);
    void fail(ErrorCode error);

    const std::vector<Parameter>& m_parameters;
    std::size_t m_next = 0;
    ErrorCode m_error = ErrorCode::None;
};

/// Error number for a refusal by the model.
ErrorCode errorFor(Refusal refusal);

} // namespace scnsim
