namespace tmxsim { int placeholder; }
