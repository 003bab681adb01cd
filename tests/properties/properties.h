#ifndef KESTO_TESTS_PROPERTIES_H
#define KESTO_TESTS_PROPERTIES_H

// Each returns whether all its properties hold.
bool checkConservation();
bool checkInvariance();

#endif
