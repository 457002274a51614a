// Writes the bundled sample calibration (data/sample-calibration.csv) to standard output.
#include "sample_calibration.h"

#include <iostream>

int main() {
    std::cout << qv5::test::sample_calibration_csv();
    return 0;
}
