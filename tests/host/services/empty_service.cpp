// A shared object with the name of a service and nothing of what the service exports.

extern "C" int emptyService;
int emptyService = 0;
