/* A shared library that is not the measurement library. */
int rt305HostTestNothing(void);

int rt305HostTestNothing(void) {
    return 0;
}
