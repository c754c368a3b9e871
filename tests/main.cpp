#include <gtest/gtest.h>

#include <clocale>

/** The log texts and file names are outside ASCII; the C locale could not tell them. */
int main(int argc, char** argv)
{
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) {
        return 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
