namespace zol { int placeholder; }
