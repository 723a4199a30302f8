// A library whose SASUM is wrong, by its name in peers and by ours: what the benchmark makes of it is tested.
#define FAULTY extern "C" [[gnu::visibility("default")]]

FAULTY float sasum_(const int*, const float*, const int*) {
    return -1;
}
FAULTY float SASUM(const int*, const float*, const int*) {
    return -1;
}

// A build of ours must answer these.
FAULTY int qrv_serv_get_cpu_type() {
    return 0;
}
FAULTY const char* qrv_serv_get_version() {
    return "faulty";
}
FAULTY int qrv_serv_set_num_threads(int) {
    return 1;
}
