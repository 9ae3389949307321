#pragma once

#include <QRandomGenerator>

/// How many random cases a comparison with a model takes: 500, or what the environment variable
/// SCN_RANDOM_CASES says, for a longer run.
inline int randomCaseCount()
{
    bool given = false;
    const int count = qEnvironmentVariableIntValue("SCN_RANDOM_CASES", &given);
    return given && count > 0 ? count : 500;
}

/// The seed of the cases, printed so that a failure can be repeated by giving it as
/// SCN_RANDOM_SEED.
inline quint32 randomSeed()
{
    bool given = false;
    const quint32 wanted = qEnvironmentVariable("SCN_RANDOM_SEED").toUInt(&given);
    const quint32 seed = given ? wanted : QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    return seed;
}
