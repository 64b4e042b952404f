/* Opens the library given as argument, makes a parallel call, and closes it: the runtime's threads must go on living.
 */
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "noxcore.h"

typedef NoxStatus (*MeanFunction)(const Nox8u *, int, NoxiSize, Nox64f *, Nox64f *);

int main(int argc, char **argv) {
    const NoxiSize roi = {4096, 1024};
    if (argc != 2 || noxSetNumThreads(4) != noxStsNoError)
        return 2;
    Nox8u *image = calloc((size_t)roi.width, (size_t)roi.height);
    void *library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (image == NULL || library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 3;
    }
    MeanFunction mean;
    *(void **)&mean = dlsym(library, "noxiMean_StdDev_8u_C1R");
    Nox64f value = -1, deviation = -1;
    if (mean == NULL || mean(image, roi.width, roi, &value, &deviation) != noxStsNoError || value != 0)
        return 4;
    dlclose(library);
    nanosleep(&(const struct timespec){0, 300000000},
              NULL); /* threads that wait for the next call run the runtime's code meanwhile */
    free(image);
    puts("closed");
    return 0;
}
