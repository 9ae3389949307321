#pragma once

#include <QRandomGenerator>

/// Number of random cases in a comparison with a model: 500, or SCN_RANDOM_CASES for a longer run.
inline int randomCaseCount()
{
    bool given = false;
    const int count = qEnvironmentVariableIntValue("SCN_RANDOM_CASES", &given);
    return given && count > 0 ? count : 500;
}

/// The seed of the cases, printed so that SCN_RANDOM_SEED can repeat a failure.
inline quint32 randomSeed()
{
    bool given = false;
    const quint32 wanted = qEnvironmentVariable("SCN_RANDOM_SEED").toUInt(&given);
    const quint32 seed = given ? wanted : QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    return seed;
}
