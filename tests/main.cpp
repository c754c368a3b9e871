#include <gtest/gtest.h>

#include <clocale>

/** Log texts and file names are not ASCII, which the C locale cannot represent. */
int main(int argc, char** argv)
{
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) {
        return 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
