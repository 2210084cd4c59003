import os

import numpy as np
import pytest


@pytest.fixture
def meuse():
    """meuse.csv's 155 points: x, y and zinc."""
    data = np.loadtxt(os.path.join(os.environ["ORVANE_SHARED_DATA"], "meuse.csv"), delimiter=",", skiprows=1)
    return data[:, 0].copy(), data[:, 1].copy(), data[:, 2].copy()


@pytest.fixture
def scattered():
    """400 random points over [0, 100] x [0, 50] with a smooth surface on them."""
    r = np.random.default_rng(5)
    x, y = r.uniform(0, 100, 400), r.uniform(0, 50, 400)
    return x, y, np.sin(x / 13.0) * 20 + y * 0.5
