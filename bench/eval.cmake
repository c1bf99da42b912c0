# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
morvane_add_bench(bench_eval bench_eval.cpp)
