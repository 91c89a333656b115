namespace varnel { int placeholder; }
