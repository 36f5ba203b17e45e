/* Something to look at with gdb_link: three kinds of work, one after the other, for so many rounds.
   Built without position independence, so that the addresses of a recording are those of the file. */
#include <stdio.h>
#include <stdlib.h>

static volatile unsigned long total;

void add_up(unsigned long count) {
    for (unsigned long i = 0; i < count; ++i)
        total += i;
}

void multiply(unsigned long count) {
    for (unsigned long i = 1; i < count; ++i)
        total = total * 31 + i;
}

void divide(unsigned long count) {
    for (unsigned long i = 1; i < count; ++i)
        total = (total + count) / i;
}

int main(int argc, char** argv) {
    const unsigned long rounds = argc > 1 ? strtoul(argv[1], NULL, 10) : 20;
    if (rounds == 0) { /* for who wants to know where things are */
        printf("%p %d\n", (void*)add_up, __LINE__);
        fflush(stdout);
        return getchar() == EOF;
    }
    for (unsigned long round = 0; round < rounds; ++round) {
        add_up(2000000);
        multiply(1000000);
        divide(400000);
    }
    return total == 1;
}
