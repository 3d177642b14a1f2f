#include "app/run.h"

int main(int argc, char** argv) {
    return dorn::dorn_run(argc, argv);
}
