#pragma once

// The collection sequence of `kelvra --harvest`: five steps in a fixed order.
// Each step reports its own failures and ends itself; none stops the run.
void harvest();

void get_stats();
void dump_states();
void dump_profile();
void get_assets();
void dump_hid_reports();
