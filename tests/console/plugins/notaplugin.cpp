// A shared library without any plug-in in it: the host must skip it.
int notAPlugin()
{
    return 0;
}
