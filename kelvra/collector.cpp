namespace kelvra_placeholder { int placeholder; }
