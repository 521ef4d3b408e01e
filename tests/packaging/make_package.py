"""Makes the Debian package with CPack and unpacks it, into WORK/package.deb and WORK/tree.

usage: make_package.py CPACK BUILD WORK
"""
import glob
import os
import shutil
import subprocess
import sys


def main():
    cpack, build, work = sys.argv[1:]
    shutil.rmtree(work, ignore_errors=True)
    # Whoever builds it may keep the own files from others; who installs it needs them.
    subprocess.run([cpack, "-B", work], cwd=build, check=True, umask=0o077)
    packages = glob.glob(os.path.join(work, "*.deb"))
    assert len(packages) == 1, packages
    os.symlink(packages[0], os.path.join(work, "package.deb"))
    subprocess.run(["dpkg-deb", "--extract", packages[0], os.path.join(work, "tree")], check=True)


if __name__ == "__main__":
    main()
